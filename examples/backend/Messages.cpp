#include "Messages.h"

#include <CommLabel.h>
#include <LocalDbSnapshot.h>
#include <Logger.h>
#include <TreeMapObject.h>
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

// Nothing when there is no schema file.
std::optional<CompiledSchema> schemaOf(unsigned int type, char const* label) {
    char const* const file = LocalDbCtrl::getSchemaFile(type, numberOf(type, label));
    return file != nullptr && access(file, F_OK) == 0 ? std::optional<CompiledSchema>(file)
                                                      : std::nullopt;
}

Reply refuseFault(int status, CompiledSchema::Fault const& fault, char const* where) {
    TreeMapObject reason(false);
    reason.set("error", fault.message);
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
    std::optional<CompiledSchema> const schema = schemaOf(type, label);
    return !schema || schema->accepts(value);
}

std::optional<Reply> refuseMessage(unsigned int type, char const* label, json_object* body) {
    std::optional<CompiledSchema> const schema = schemaOf(type, label);
    CompiledSchema::Fault fault;
    if (!schema || schema->accepts(body, &fault)) {
        return std::nullopt;
    }
    Logger::print(LOG_TYPE_WARN, LOG_GROUP_API_AL, "%s: not valid, refused\n", label);
    return refuseFault(*schema ? 400 : 500, fault, "body");
}

Reply refuseDocument(unsigned int type, CompiledSchema::Fault const& fault) {
    std::string file = LocalDbCtrl::getFileName(type);
    file.insert(file.rfind('.'), "_SCHEMA");
    std::unique_ptr<TreeMapObject> const saved(LocalDbSnapshot(type).copy(""));
    bool const wasValid = CompiledSchema(file.c_str()).accepts(saved ? saved->jobj : nullptr);
    Logger::print(LOG_TYPE_WARN, LOG_GROUP_API_AL, "%s: the changed database is refused\n",
                  LocalDbCtrl::getApiDir(type));
    return refuseFault(wasValid ? 400 : 500, fault, "database");
}
