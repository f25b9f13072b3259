// The record of a change to several files: which file gets which content. Text, and a sum over it:
//
//     change 1
//     rename 0123456789abcdef fedcba9876543210 wifi/wifi.ldb
//     write 00112233445566aa ffeeddccbbaa9988 security/security.ldb
//     sum 8899aabbccddeeff
//
// The numbers are the versions of the content (FileBytes.h) that the file had, 0 if there was none,
// and that it gets. "write" says that the file may hold a part of the new content, as it could not
// be replaced.
#pragma once

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

namespace vobiutils {

class ChangeRecord {
  public:
    static int const MOST = 9;
    static size_t const SIZE = 4096;  // a record in text is shorter

    struct File {
        uint64_t had;
        uint64_t gets;
        bool isInPlace;
        char name[256];  // below the folder of the change
    };

    // Adds a file. False if there is no room, and for a name that is there already, or might lead
    // elsewhere: one that is empty, begins with a slash, or has no folder, a part "." or "..", or a
    // control character.
    bool add(char const* name, uint64_t had, uint64_t gets, bool isInPlace = false);

    int count() const { return count_; }
    File& operator[](int i) {
        assert(i < count_);
        return files_[i];
    }

    // Writes the record into `text`, and returns its length.
    size_t print(char (&text)[SIZE]) const;

    // Sets the record, empty before, to what `text` says, which ends with a zero. False unless that
    // is, byte for byte, what print() makes of it.
    bool parse(char const* text);

  private:
    bool parseLine(char const* line);

    int count_ = 0;
    File files_[MOST];
};

}  // namespace vobiutils
