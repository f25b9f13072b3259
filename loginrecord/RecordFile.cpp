// The record file as a json-c array.
#include "loginrecord/RecordFile.h"

#include <assert.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "jsondata/files/JsonFile.h"
#include "jsondata/files/JsonSave.h"
#include "loginrecord/Lockout.h"

namespace vobiutils {

namespace {

char const RECORD_FILE[] = ".loginrecord.cfg";

// Null unless the member is a string.
char const* stringMember(json_object* object, char const* key) {
    json_object* value = nullptr;
    json_object_object_get_ex(object, key, &value);
    return json_object_is_type(value, json_type_string) ? json_object_get_string(value) : nullptr;
}

// Null for an element of another form.
char const* addressOf(json_object* client) { return stringMember(client, "ipAddress"); }

// Takes over `value`. A null one (json-c ran out of memory) is not stored.
bool setMember(json_object* object, char const* key, json_object* value) {
    if (value != nullptr && json_object_object_add(object, key, value) == 0) {
        return true;
    }
    json_object_put(value);
    return false;
}

// Null when out of memory.
json_object* newAddress(char const* ipAddress, char const* subject) {
    if (subject == nullptr) {
        return json_object_new_string(ipAddress);
    }
    size_t const size = strlen(ipAddress) + 1 + strlen(subject) + 1;
    char* const address = static_cast<char*>(malloc(size));
    if (address == nullptr) {
        return nullptr;
    }
    snprintf(address, size, "%s %s", ipAddress, subject);
    json_object* const result = json_object_new_string(address);
    free(address);
    return result;
}

// Whether `rest`, what follows the client in an address, names the subject; or any, for null.
bool namesSubject(char const* rest, char const* subject) {
    return *rest == ' ' && (subject == nullptr || strcmp(rest + 1, subject) == 0);
}

// What follows `ipAddress` in the address of an element; null if that does not begin with it.
char const* restOf(json_object* client, char const* ipAddress) {
    char const* const address = addressOf(client);
    size_t const length = strlen(ipAddress);
    return address != nullptr && strncmp(address, ipAddress, length) == 0 ? address + length
                                                                          : nullptr;
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

size_t RecordFile::count() const {
    assert(isWellFormed());
    return json_object_array_length(clients_);
}

json_object* RecordFile::find(char const* ipAddress, char const* subject) const {
    size_t const end = count();
    for (size_t i = 0; i < end; ++i) {
        json_object* const client = json_object_array_get_idx(clients_, i);
        char const* const rest = restOf(client, ipAddress);
        if (rest != nullptr && (subject != nullptr ? namesSubject(rest, subject) : *rest == '\0')) {
            return client;
        }
    }
    return nullptr;
}

bool RecordFile::append(char const* ipAddress, char const* subject, uint64_t now) {
    json_object* const client = json_object_new_object();
    if (client != nullptr && setMember(client, "ipAddress", newAddress(ipAddress, subject)) &&
        setAttempts(client, 1) && setLastAttempt(client, now) &&
        json_object_array_add(clients_, client) == 0) {
        return true;
    }
    json_object_put(client);
    return false;
}

void RecordFile::removeSubjects(char const* ipAddress, char const* subject) {
    for (size_t i = count(); i-- > 0;) {
        char const* const rest = restOf(json_object_array_get_idx(clients_, i), ipAddress);
        if (rest != nullptr && namesSubject(rest, subject)) {
            json_object_array_del_idx(clients_, i, 1);
        }
    }
}

size_t RecordFile::mostDispensable(json_object const* kept, uint64_t now) const {
    size_t found = count();
    Standing least = {};
    for (size_t i = 0; i < count(); ++i) {
        json_object* const client = json_object_array_get_idx(clients_, i);
        Standing const standing = addressOf(client) != nullptr && hasLastAttempt(client)
                                      ? standingOf(attemptsOf(client), lastAttemptOf(client), now)
                                      : Standing();
        if ((found == count() || standing < least) && (client == nullptr || client != kept)) {
            found = i;
            least = standing;
        }
    }
    return found;
}

void RecordFile::makeRoom(unsigned int maximum, json_object const* kept, uint64_t now) {
    while (count() >= maximum &&
           json_object_array_del_idx(clients_, mostDispensable(kept, now), 1) == 0) {
    }
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
