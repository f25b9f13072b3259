// The record file as a json-c array.
#include "loginrecord/RecordFile.h"

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "jsondata/files/JsonFile.h"
#include "jsondata/files/JsonSave.h"

namespace vobiutils {

namespace {

char const RECORD_FILE[] = ".loginrecord.cfg";

// Null unless the member is a string.
char const* stringMember(json_object* object, char const* key) {
    json_object* value = nullptr;
    json_object_object_get_ex(object, key, &value);
    return json_object_is_type(value, json_type_string) ? json_object_get_string(value) : nullptr;
}

// Takes over `value`. A null one (json-c ran out of memory) is not stored.
bool setMember(json_object* object, char const* key, json_object* value) {
    if (value != nullptr && json_object_object_add(object, key, value) == 0) {
        return true;
    }
    json_object_put(value);
    return false;
}

bool fillClient(json_object* client, char const* ipAddress, uint64_t now) {
    return client != nullptr && setMember(client, "ipAddress", json_object_new_string(ipAddress)) &&
           setAttempts(client, 1) && setLastAttempt(client, now);
}

}  // namespace

// Not synced: a sync is slow on flash, and the next start empties the record anyway.
bool RecordFile::write(json_object* array) {
    return saveJsonFile(RECORD_FILE, array, Durability::UNSYNCED) == 0;
}

RecordFile::RecordFile() : clients_(readJsonFile(RECORD_FILE)) {}

RecordFile::~RecordFile() {
    if (isWellFormed()) {  // intended leak: the value of an ill-formed file
        json_object_put(clients_);
    }
}

json_object* RecordFile::find(char const* ipAddress) const {
    size_t const count = json_object_array_length(clients_);
    for (size_t i = 0; i < count; ++i) {
        json_object* const client = json_object_array_get_idx(clients_, i);
        char const* const address = stringMember(client, "ipAddress");
        if (address != nullptr && strcmp(address, ipAddress) == 0) {
            return client;
        }
    }
    return nullptr;
}

bool RecordFile::append(char const* ipAddress, uint64_t now) {
    json_object* const client = json_object_new_object();
    if (fillClient(client, ipAddress, now) && json_object_array_add(clients_, client) == 0) {
        return true;
    }
    json_object_put(client);
    return false;
}

int attemptsOf(json_object* client) {
    json_object* value = nullptr;
    json_object_object_get_ex(client, "attempts", &value);
    return json_object_get_int(value);
}

bool setAttempts(json_object* client, int attempts) {
    return setMember(client, "attempts", json_object_new_int(attempts));
}

bool hasLastAttempt(json_object* client) { return stringMember(client, "lastAttempt") != nullptr; }

// Writes 64 bits whatever the size of a long: a 32-bit device may have a 64-bit time_t.
bool setLastAttempt(json_object* client, uint64_t time) {
    char text[32];
    snprintf(text, sizeof text, "%" PRIu64, time);
    return setMember(client, "lastAttempt", json_object_new_string(text));
}

uint64_t lastAttemptOf(json_object* client) {
    char const* const text = stringMember(client, "lastAttempt");
    char* end = nullptr;
    uint64_t const time = strtoull(text, &end, 10);
    return end != text ? time : UINT64_MAX;
}

}  // namespace vobiutils
