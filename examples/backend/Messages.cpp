#include "Messages.h"

#include <CommLabel.h>
#include <LocalDbSnapshot.h>
#include <Logger.h>
#include <TreeMapObject.h>
#include <json-c/json_pointer.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
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

char const* schemaFileOf(unsigned int type, char const* label) {
    return LocalDbCtrl::getSchemaFile(type, numberOf(type, label));
}

// Nothing when there is no such file.
std::optional<CompiledSchema> schemaIn(char const* file) {
    return file != nullptr && access(file, F_OK) == 0 ? std::optional<CompiledSchema>(file)
                                                      : std::nullopt;
}

// The description of the refused value in the schema: it is for people what a pattern is for
// programs. "" if there is none.
std::string descriptionOf(CompiledSchema::Fault const& fault, char const* schemaFile) {
    Json const schema(json_object_from_file(schemaFile));
    std::string place = fault.schemaPath;
    place.replace(place.rfind('/') + 1, std::string::npos, "description");
    json_object* found = nullptr;
    json_pointer_get(schema.get(), place.c_str(), &found);
    return json_object_is_type(found, json_type_string) ? json_object_get_string(found) : "";
}

Reply refuseFault(int status, CompiledSchema::Fault const& fault, char const* schemaFile,
                  char const* where) {
    TreeMapObject reason(false);
    reason.set("error", fault.message);
    std::string const hint = descriptionOf(fault, schemaFile);
    if (!hint.empty()) {
        reason.set("hint", hint.c_str());
    }
    reason.set("path", fault.path);
    reason.set("keyword", fault.keyword);
    reason.set("in", where);
    Reply reply;
    reply.status = status;
    reply.body = textOf(reason.jobj);
    return reply;
}

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

bool isValid(unsigned int type, char const* label, json_object* value) {
    std::optional<CompiledSchema> const schema = schemaIn(schemaFileOf(type, label));
    return !schema || schema->accepts(value);
}

std::optional<Reply> refuseMessage(unsigned int type, char const* label, json_object* body) {
    char const* const file = schemaFileOf(type, label);
    std::optional<CompiledSchema> const schema = schemaIn(file);
    CompiledSchema::Fault fault;
    if (!schema || schema->accepts(body, &fault)) {
        return std::nullopt;
    }
    Logger::print(LOG_TYPE_WARN, LOG_GROUP_API_AL, "%s: not valid, refused\n", label);
    return refuseFault(*schema ? 400 : 500, fault, file, "body");
}

Reply refuseDocument(unsigned int type, CompiledSchema::Fault const& fault) {
    std::string file = LocalDbCtrl::getFileName(type);
    file.insert(file.rfind('.'), "_SCHEMA");
    std::unique_ptr<TreeMapObject> const saved(LocalDbSnapshot(type).copy(""));
    bool const wasValid = CompiledSchema(file.c_str()).accepts(saved ? saved->jobj : nullptr);
    Logger::print(LOG_TYPE_WARN, LOG_GROUP_API_AL, "%s: the changed database is refused\n",
                  LocalDbCtrl::getApiDir(type));
    return refuseFault(wasValid ? 400 : 500, fault, file.c_str(), "database");
}
