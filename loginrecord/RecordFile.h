// Reads and writes the record file, a JSON array with one object per client:
//
//     [{"ipAddress": "192.168.1.7", "attempts": 3, "lastAttempt": "1700000000"}]
//
// What a client tried at a subject is an element of its own, with the address "CLIENT SUBJECT".
// Elements of any other form are skipped. Callers hold BELoginRecord::lock.
#pragma once

#include <json-c/json.h>
#include <stdint.h>

namespace vobiutils {

class RecordFile {
  public:
    // Replaces the file with the array `array`.
    static bool write(json_object* array);

    RecordFile();  // reads the file
    ~RecordFile();
    RecordFile(RecordFile const&) = delete;
    RecordFile& operator=(RecordFile const&) = delete;

    bool isReadable() const { return clients_ != nullptr; }
    bool isWellFormed() const { return json_object_is_type(clients_, json_type_array) != 0; }

    // The first element with that address, of what the client tried at `subject` if that is not
    // null. Borrowed; null when there is none.
    json_object* find(char const* ipAddress, char const* subject = nullptr) const;

    // Appends such an element with one attempt at `now`.
    bool append(char const* ipAddress, char const* subject, uint64_t now);

    // Removes what the client tried at `subject`; at all of them if that is null.
    void removeSubjects(char const* ipAddress, char const* subject = nullptr);

    // Removes elements until fewer than `maximum` are left, in the order that
    // BELoginRecord::setMaximum states. `kept`, if not null, stays.
    void makeRoom(unsigned int maximum, json_object const* kept, uint64_t now);

    bool save() const { return write(clients_); }

  private:
    size_t count() const;
    size_t mostDispensable(json_object const* kept, uint64_t now) const;

    json_object* clients_;
};

// The members of one client's element.
int attemptsOf(json_object* client);
bool setAttempts(json_object* client, int attempts);
bool hasLastAttempt(json_object* client);
bool setLastAttempt(json_object* client, uint64_t time);
// The stored time in seconds since the epoch; call it only when hasLastAttempt. A value that is not
// a number counts as the end of time (the lock-out does not expire).
uint64_t lastAttemptOf(json_object* client);

}  // namespace vobiutils
