// Bytes of a file in memory: read, compared, identified and parsed.
#pragma once

#include <json-c/json.h>
#include <stddef.h>
#include <stdint.h>

#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

// Identifies bytes: equal for equal bytes on every machine, and never 0.
uint64_t hashOf(char const* bytes, size_t length);

// The same, of bytes that come in pieces: their length first.
class BytesHash {
  public:
    explicit BytesHash(size_t length);
    void add(char const* bytes, size_t length);  // a multiple of 8, but in the last call
    uint64_t value() const { return hash_ != 0 ? hash_ : 1; }

  private:
    uint64_t hash_;
};

// Sets `version` to that of the content of a file, 0 if there is none, which is read in pieces: it
// takes no memory. False with errno if it cannot be read, and for what is not a regular file.
bool readVersion(char const* name, uint64_t& version);

// About a GiB at most, as json-c counts them by an int.
class FileBytes {
  public:
    FileBytes() = default;
    ~FileBytes();
    FileBytes(FileBytes const&) = delete;
    FileBytes& operator=(FileBytes const&) = delete;

    // Appends what is left to read in the file, and expects `expected` bytes of it. Returns 0, or
    // the error of the system: EFBIG for more bytes than fit.
    int append(FileDescriptor const& file, off_t expected = 0);
    void clear();  // and frees the memory

    char const* data() const { return bytes_; }  // null if there are none
    size_t length() const { return static_cast<size_t>(length_); }
    bool operator==(FileBytes const& other) const;

    // The value that the bytes begin with, the caller's to release. Null if there is none, if it is
    // JSON null, and, with ENOMEM in errno, when out of memory. Sets `end`, unless null, to the number
    // of bytes that the value takes.
    json_object* parse(size_t* end = nullptr) const;

    bool isBlankFrom(size_t start) const;  // whether nothing but white space follows

    uint64_t version() const { return hashOf(bytes_, length()); }

  private:
    bool reserve(size_t capacity);

    char* bytes_ = nullptr;
    int length_ = 0;
    size_t capacity_ = 0;
};

}  // namespace vobiutils
