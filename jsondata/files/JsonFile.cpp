// Reads a whole JSON file into a json-c value.
#include "jsondata/files/JsonFile.h"

#include <limits.h>
#include <stdlib.h>

#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

namespace {

// A buffer with the content of a file; grows by doubling.
class Text {
  public:
    Text() = default;
    ~Text() { free(bytes_); }
    Text(Text const&) = delete;
    Text& operator=(Text const&) = delete;

    char const* bytes() const { return bytes_; }
    int length() const { return length_; }

    // False when the file cannot be read, when out of memory, and for a file that is longer than
    // json-c can parse: it counts with an int.
    bool readAll(FileDescriptor const& file) {
        for (;;) {
            if (length_ == capacity_ && !grow()) {
                return false;
            }
            size_t const space = static_cast<size_t>(capacity_ - length_);
            ssize_t const count = file.read(bytes_ + length_, space);
            if (count <= 0) {
                return count == 0;
            }
            length_ += static_cast<int>(count);
        }
    }

  private:
    bool grow() {
        if (capacity_ > INT_MAX / 2) {
            return false;
        }
        int const capacity = capacity_ > 0 ? capacity_ * 2 : 4096;
        void* const grown = realloc(bytes_, static_cast<size_t>(capacity));
        if (grown == nullptr) {
            return false;
        }
        bytes_ = static_cast<char*>(grown);
        capacity_ = capacity;
        return true;
    }

    char* bytes_ = nullptr;
    int length_ = 0;
    int capacity_ = 0;
};

json_object* parse(char const* text, int length) {
    json_tokener* const tokener = json_tokener_new();
    if (tokener == nullptr) {
        return nullptr;
    }
    json_object* const value = json_tokener_parse_ex(tokener, text, length);
    json_tokener_free(tokener);
    return value;
}

json_object* readValue(FileDescriptor const& file) {
    Text text;
    return text.readAll(file) ? parse(text.bytes(), text.length()) : nullptr;
}

}  // namespace

json_object* readJsonFile(char const* name) {
    FileDescriptor file;
    return name != nullptr && file.open(name, O_RDONLY) ? readValue(file) : nullptr;
}

}  // namespace vobiutils
