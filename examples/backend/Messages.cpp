// Holds the table of messages, validates them, and turns faults into refusals.
#include "Resources.h"

#include <BEConfig.h>
#include <CommLabel.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <LocalDbSnapshot.h>
#include <Logger.h>

#include <algorithm>
#include <sstream>

namespace {

struct Message {
    char const* method;
    unsigned int type;
    char const* place;  // a path; "[]" is any element
    char const* label;
};

Message const MESSAGES[] = {
    {"GET", API_GATEWAY, "about", "GATEWAY_ABOUT_RESP"},
    {"GET", API_GATEWAY, "led", "GATEWAY_LED_GET_RESP"},
    {"PUT", API_GATEWAY, "led", "GATEWAY_LED_UPDATE_REQ"},
    {"GET", API_NETWORK, "lan", "NETWORK_LAN_GET_RESP"},
    {"PUT", API_NETWORK, "lan", "NETWORK_LAN_UPDATE_REQ"},
    {"GET", API_WIFI, "ssids", "WIFI_SSID_LIST_ALL_RESP"},
    {"GET", API_WIFI, "ssids.[]", "WIFI_SSID_GET_RESP"},
    {"PUT", API_WIFI, "ssids.[]", "WIFI_SSID_UPDATE_REQ"},
    {"POST", API_SERVICE, "portForwarding.rules", "SERVICE_PORTFORWARDING_CREATE_REQ"},
    {"PUT", API_SERVICE, "portForwarding.rules.[]", "SERVICE_PORTFORWARDING_UPDATE_REQ"},
};

// Returns the path with an index at its end replaced by "[]".
std::string placeOf(std::string const& path) {
    bool const isElement = JsonData::lastStep(path).starts_with('[');
    return isElement ? JsonData::parentPath(path) + ".[]" : path;
}

unsigned int numberOf(unsigned int type, char const* label) {
    return static_cast<unsigned int>(COMM_TYPE(type, label));
}

// Converts a JSON pointer into a schema to a path.
std::string pathOf(std::string const& pointer) {
    std::string path;
    std::istringstream steps(pointer.substr(std::min<size_t>(pointer.size(), 1)));
    for (std::string step; std::getline(steps, step, '/');) {
        bool const isIndex = step.find_first_not_of("0123456789") == std::string::npos;
        path += (path.empty() ? "" : ".") + (isIndex ? "[" + step + "]" : step);
    }
    return path;
}

// The hint is the description that the schema has of the refused value: it tells people what a pattern tells programs.
Reply refuseFault(int status, unsigned int type, CompiledSchema::Fault const& fault,
                  char const* schemaFile, char const* where) {
    std::string place = JsonData::parentPath(pathOf(fault.schemaPath));
    Node const schema(JsonData::createObjectFromFile(schemaFile));
    char const* hint = nullptr;
    place += place.empty() ? "description" : ".description";
    if (schema != nullptr && schema->presence(place.c_str()) == TreeMapObject::PRESENT) {
        schema->get_ex(place.c_str(), hint);
    }
    TreeMapObject reason(false);
    reason.set("error", fault.message);
    if (hint != nullptr) {
        reason.set("hint", hint);
    }
    reason.set("path", fault.path);
    reason.set("keyword", fault.keyword);
    reason.set("in", where);
    reason.set("type", LocalDbCtrl::getApiDir(type));
    return replyWith(reason, status);
}

bool isValid(unsigned int type, char const* label, TreeMapObject& value) {
    return LocalDbCtrl::validateObject(&value, type, numberOf(type, label)) == 0;
}

}  // namespace

char const* messageOf(std::string const& method, unsigned int type, std::string const& path) {
    std::string const place = placeOf(path);
    for (Message const& message : MESSAGES) {
        if (message.type == type && place == message.place && method == message.method) {
            return message.label;
        }
    }
    return nullptr;
}

std::string schemaFileOf(unsigned int type) {
    std::string file = LocalDbCtrl::getFileName(type);
    return file.insert(file.rfind('.'), "_SCHEMA");
}

void requireRequest(unsigned int type, char const* label, TreeMapObject& body) {
    if (isValid(type, label, body)) {
        return;
    }
    Logger::print(LOG_TYPE_INFO, LOG_GROUP_API_AL, "%s: not valid, refused\n", label);
    char const* const file = LocalDbCtrl::getSchemaFile(type, numberOf(type, label));
    CompiledSchema const schema(file);
    CompiledSchema::Fault fault = {};
    schema.accepts(body.jobj, &fault);
    throw refuseFault(schema ? 400 : 500, type, fault, file, "body");
}

void requireResponse(unsigned int type, char const* label, TreeMapObject& value) {
    if (BEConfig::VALIDATION_ON_RESPONSE != 0 && !isValid(type, label, value)) {
        Logger::print(LOG_TYPE_ERROR, LOG_GROUP_API_AL, "%s: not valid, not sent\n", label);
        throw refuse(500, std::string("what would be the answer is not a valid ") + label);
    }
}

Reply refuseDocument(LocalDbTransaction::Fault const& fault) {
    std::string const file = schemaFileOf(fault.apiType);
    Node const saved(LocalDbSnapshot(fault.apiType).copy(""));
    bool const wasValid = CompiledSchema(file.c_str()).accepts(saved ? saved->jobj : nullptr);
    Logger::print(LOG_TYPE_WARN, LOG_GROUP_API_AL, "%s: the changed database is refused\n",
                  LocalDbCtrl::getApiDir(fault.apiType));
    return refuseFault(wasValid ? 400 : 500, fault.apiType, fault, file.c_str(), "database");
}
