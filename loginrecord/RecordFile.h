// The record file: one JSON array with an object {"ipAddress", "attempts", "lastAttempt"} per
// client. Elements of any other form are passed over. Callers hold BELoginRecord::lock.
#ifndef VOBIUTILS_LOGINRECORD_RECORDFILE_H
#define VOBIUTILS_LOGINRECORD_RECORDFILE_H

#include <json-c/json.h>
#include <stdint.h>

namespace vobiutils {

class RecordFile {
  public:
    // Writes an array as the whole file.
    static bool write(json_object* array);

    RecordFile();  // reads the file
    ~RecordFile();
    RecordFile(RecordFile const&) = delete;
    RecordFile& operator=(RecordFile const&) = delete;

    bool isReadable() const { return clients_ != nullptr; }
    bool isWellFormed() const { return json_object_is_type(clients_, json_type_array) != 0; }

    // The first element of that address, borrowed; null when there is none.
    json_object* find(char const* ipAddress) const;

    // Appends a client with one attempt at `now`.
    bool append(char const* ipAddress, uint64_t now);

    bool save() const { return write(clients_); }

  private:
    json_object* clients_;
};

// The members of one client's element.
int attemptsOf(json_object* client);
bool setAttempts(json_object* client, int attempts);
bool hasLastAttempt(json_object* client);
bool setLastAttempt(json_object* client, uint64_t time);
// The stored time, if there is one, in seconds since the epoch; one that is no number counts as the
// end of time.
uint64_t lastAttemptOf(json_object* client);

}  // namespace vobiutils

#endif
