#include "JsonFile.h"

#include <stddef.h>

#include "FileDescriptor.h"

namespace {

// The whole file, at the end of `text`.
bool readAll(FileDescriptor const& file, printbuf* text) {
    char chunk[4096];
    for (;;) {
        ssize_t const count = file.read(chunk, sizeof chunk);
        if (count <= 0) {
            return count == 0;
        }
        if (printbuf_memappend(text, chunk, static_cast<int>(count)) < 0) {
            return false;
        }
    }
}

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
    printbuf* const text = printbuf_new();
    if (text == nullptr) {
        return nullptr;
    }
    json_object* const value =
        readAll(file, text) ? parse(text->buf, printbuf_length(text)) : nullptr;
    printbuf_free(text);
    return value;
}

}  // namespace

json_object* readJsonFile(char const* name) {
    FileDescriptor file;
    return name != nullptr && file.open(name, O_RDONLY) ? readValue(file) : nullptr;
}
