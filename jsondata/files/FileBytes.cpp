// Reads the bytes of a file, hashes and parses them.
#include "jsondata/files/FileBytes.h"

#include <assert.h>
#include <endian.h>
#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>

namespace vobiutils {

namespace {

size_t const SMALLEST = 4096;

// Up to eight bytes as a number, the first one lowest.
uint64_t wordOf(char const* bytes, size_t count) {
    uint64_t word = 0;
    memcpy(&word, bytes, count);
    return le64toh(word);
}

}  // namespace

// Eight bytes at a time: byte by byte it would take a tenth of the time of parsing. A product carries
// differences up only, so that one in the last bytes of a word would stay in a few bits, where the next
// word can undo it: each word is spread down, up again and down, before the next one comes.
void BytesHash::add(char const* bytes, size_t length) {
    for (size_t at = 0; at < length; at += 8) {
        hash_ ^= wordOf(bytes + at, std::min<size_t>(8, length - at));
        hash_ *= 0x9e3779b97f4a7c15;
        hash_ ^= hash_ >> 32;
        hash_ *= 0xbf58476d1ce4e5b9;
        hash_ ^= hash_ >> 32;
    }
}

BytesHash::BytesHash(size_t length) : hash_(length) {}

uint64_t hashOf(char const* bytes, size_t length) {
    BytesHash hash(length);
    hash.add(bytes, length);
    return hash.value();
}

bool readVersion(char const* name, uint64_t& version) {
    version = 0;
    struct stat status;
    if (stat(name, &status) != 0) {
        return errno == ENOENT || errno == ENOTDIR;
    }
    FileDescriptor file;
    if (!S_ISREG(status.st_mode)) {  // to open it might take for ever
        errno = EINVAL;
        return false;
    }
    if (!file.open(name, O_RDONLY) || fstat(file.get(), &status) != 0) {
        return false;
    }
    BytesHash hash(static_cast<size_t>(status.st_size));
    char chunk[4096];
    ssize_t count = 0;
    while ((count = file.readFully(chunk, sizeof chunk)) > 0) {
        hash.add(chunk, static_cast<size_t>(count));
    }
    version = hash.value();
    return count == 0;
}

FileBytes::~FileBytes() { free(bytes_); }

void FileBytes::clear() {
    free(bytes_);
    bytes_ = nullptr;
    length_ = 0;
    capacity_ = 0;
}

bool FileBytes::reserve(size_t capacity) {
    if (capacity <= capacity_) {
        return true;
    }
    void* const grown = realloc(bytes_, capacity);
    if (grown == nullptr) {
        return false;
    }
    bytes_ = static_cast<char*>(grown);
    capacity_ = capacity;
    return true;
}

// One byte more than expected, so that the read that finds the end needs no more room.
int FileBytes::append(FileDescriptor const& file, off_t expected) {
    if (expected > INT_MAX / 2) {
        return EFBIG;
    }
    size_t capacity = std::max(SMALLEST, static_cast<size_t>(expected) + 1);
    for (;;) {
        if (!reserve(capacity)) {
            return ENOMEM;
        }
        size_t const used = static_cast<size_t>(length_);
        assert(used < capacity_);
        ssize_t const count = file.read(bytes_ + used, capacity_ - used);
        if (count <= 0) {
            return count == 0 ? 0 : errno;
        }
        length_ += static_cast<int>(count);
        if (static_cast<size_t>(length_) == capacity_) {
            if (capacity_ > INT_MAX / 2) {
                return EFBIG;
            }
            capacity = capacity_ * 2;
        }
    }
}

bool FileBytes::operator==(FileBytes const& other) const {
    return length_ == other.length_ &&
           (length_ == 0 || memcmp(bytes_, other.bytes_, static_cast<size_t>(length_)) == 0);
}

bool FileBytes::isBlankFrom(size_t start) const {
    std::string_view const all(bytes_, length());
    return all.find_first_not_of(" \t\r\n", start) == std::string_view::npos;
}

json_object* FileBytes::parse(size_t* end) const {
    json_tokener* const tokener = json_tokener_new();
    if (tokener == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    errno = 0;
    json_object* value = json_tokener_parse_ex(tokener, bytes_, length_);
    int const error = errno;  // json-c before 0.17 has no code for this
    if (end != nullptr) {
        *end = json_tokener_get_parse_end(tokener);
    }
    json_tokener_free(tokener);
    if (error == ENOMEM && value != nullptr) {  // members may be missing
        json_object_put(value);
        value = nullptr;
    }
    errno = error;
    return value;
}

}  // namespace vobiutils
