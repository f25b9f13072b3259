#include "Messages.h"

#include <CommLabel.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "Json.h"

namespace {

char const ANY[] = "[]";

Message const MESSAGES[] = {
    {"GET", API_GATEWAY, "about", "GATEWAY_ABOUT_REQ", "GATEWAY_ABOUT_RESP"},
    {"GET", API_GATEWAY, "led", "GATEWAY_LED_GET_REQ", "GATEWAY_LED_GET_RESP"},
    {"PUT", API_GATEWAY, "led", "GATEWAY_LED_UPDATE_REQ", "GATEWAY_LED_UPDATE_RESP"},
    {"GET", API_NETWORK, "lan", "NETWORK_LAN_GET_REQ", "NETWORK_LAN_GET_RESP"},
    {"PUT", API_NETWORK, "lan", "NETWORK_LAN_UPDATE_REQ", "NETWORK_LAN_UPDATE_RESP"},
    {"GET", API_WIFI, "ssids", "WIFI_SSID_LIST_ALL_REQ", "WIFI_SSID_LIST_ALL_RESP"},
    {"GET", API_WIFI, "ssids.[]", "WIFI_SSID_GET_REQ", "WIFI_SSID_GET_RESP"},
    {"PUT", API_WIFI, "ssids.[]", "WIFI_SSID_UPDATE_REQ", "WIFI_SSID_UPDATE_RESP"},
    {"POST", API_SERVICE, "portForwarding.rules", "SERVICE_PORTFORWARDING_CREATE_REQ",
     "SERVICE_PORTFORWARDING_CREATE_RESP"},
    {"PUT", API_SERVICE, "portForwarding.rules.[]", "SERVICE_PORTFORWARDING_UPDATE_REQ",
     "SERVICE_PORTFORWARDING_UPDATE_RESP"},
};

std::vector<std::string> placeOf(Message const& message) {
    std::vector<std::string> tokens;
    for (char const* text = message.place; *text != '\0'; text += strspn(text, ".")) {
        size_t const length = strcspn(text, ".");
        tokens.emplace_back(text, length);
        text += length;
    }
    return tokens;
}

bool fits(std::string const& token, std::string const& wanted) {
    return wanted == ANY ? Path::isIndex(token) : token == wanted;
}

unsigned int numberOf(unsigned int type, char const* label) {
    for (unsigned int number = 0;; ++number) {
        char const* const name = COMM_LABEL(type, number);
        if (name == nullptr || strcmp(name, label) == 0 || strcmp(name, "unknown") == 0) {
            return number;
        }
    }
}

// Members of the form become those of the value; those that the value lacks go.
void fillIn(json_object* form, json_object* value) {
    for (auto const& [name, field] : membersOf(form)) {
        json_object* filled = nullptr;
        if (!json_object_object_get_ex(value, name, &filled)) {
            json_object_object_del(form, name);
        } else if (json_object_is_type(field, json_type_object) &&
                   json_object_is_type(filled, json_type_object)) {
            fillIn(field, filled);
        } else {
            json_object_object_add(form, name, json_object_get(filled));
        }
    }
}

// Checks the message at every place below `node` that the change can have reached.
class Checker {
  public:
    Checker(Message const& message, Path const& changed)
        : message_(message), place_(placeOf(message)), changed_(changed.tokens) {}

    bool isGood(json_object* node, size_t depth = 0) const {
        if (depth == place_.size()) {
            return isGoodMessage(node);
        }
        std::string const& wanted = place_[depth];
        if (depth < changed_.size() && !fits(changed_[depth], wanted)) {
            return true;  // the change went elsewhere
        }
        json_object* member = nullptr;
        if (wanted != ANY) {
            return json_object_object_get_ex(node, wanted.c_str(), &member) &&
                   isGood(member, depth + 1);
        }
        auto const elements = elementsOf(node);
        for (size_t i = 0; i < elements.size(); ++i) {
            bool const isReached = depth >= changed_.size() || i == Path::indexOf(changed_[depth]);
            if (isReached && !isGood(elements[i], depth + 1)) {
                return false;
            }
        }
        return true;
    }

    char const* label() const { return isUpdate() ? message_.request : message_.response; }

  private:
    bool isUpdate() const { return strcmp(message_.method, "PUT") == 0; }

    bool isGoodMessage(json_object* node) const {
        if (!hasSchema(message_.type, label())) {
            return true;
        }
        return isUpdate() ? isGoodForm(node) : isValid(message_.type, label(), node);
    }

    bool isGoodForm(json_object* node) const {
        TreeMapObject form(message_.type, numberOf(message_.type, message_.request));
        if (!json_object_is_type(node, json_type_object) ||
            !json_object_is_type(form.jobj, json_type_object)) {
            return false;
        }
        fillIn(form.jobj, node);
        return isValid(message_.type, message_.request, form.jobj);
    }

    Message const& message_;
    std::vector<std::string> const place_;
    std::vector<std::string> const& changed_;
};

}  // namespace

Message const* messageOf(char const* method, unsigned int type, Path const& path) {
    for (Message const& message : MESSAGES) {
        std::vector<std::string> const place = placeOf(message);
        if (message.type == type && strcmp(message.method, method) == 0 &&
            std::equal(path.tokens.begin(), path.tokens.end(), place.begin(), place.end(), fits)) {
            return &message;
        }
    }
    return nullptr;
}

bool hasSchema(unsigned int type, char const* label) {
    char const* const file = LocalDbCtrl::getSchemaFile(type, numberOf(type, label));
    return file != nullptr && access(file, F_OK) == 0;
}

Json schemaOf(unsigned int type, char const* label) {
    char const* const file = LocalDbCtrl::getSchemaFile(type, numberOf(type, label));
    return Json(file != nullptr ? json_object_from_file(file) : nullptr);
}

bool hasUsableFiles(unsigned int type, char const* label) {
    Json const schema = schemaOf(type, label);
    TreeMapObject const form(type, numberOf(type, label));
    return json_object_is_type(form.jobj, json_type_object) &&
           (!hasSchema(type, label) || json_object_is_type(schema.get(), json_type_object));
}

bool isValid(unsigned int type, char const* label, json_object* value) {
    TreeMapObject message(json_object_get(value));
    return LocalDbCtrl::validateObject(&message, type, numberOf(type, label)) == 0;
}

char const* brokenMessage(unsigned int type, TreeMapObject& document, Path const& path) {
    for (Message const& message : MESSAGES) {
        Checker const checker(message, path);
        if (message.type == type && strcmp(message.method, "POST") != 0 &&
            !checker.isGood(document.jobj)) {
            return checker.label();
        }
    }
    return nullptr;
}
