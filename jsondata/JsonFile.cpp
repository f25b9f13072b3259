#include "JsonFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <unistd.h>

namespace {

// The whole file, at the end of `text`.
bool readAll(int fd, printbuf* text) {
    char chunk[4096];
    for (;;) {
        ssize_t const count = read(fd, chunk, sizeof chunk);
        if (count == 0) {
            return true;
        }
        if (count < 0 && errno != EINTR) {
            return false;
        }
        if (count > 0 && printbuf_memappend(text, chunk, static_cast<int>(count)) < 0) {
            return false;
        }
    }
}

bool writeAll(int fd, char const* text, size_t length) {
    while (length > 0) {
        ssize_t const count = write(fd, text, length);
        if (count > 0) {
            text += count;
            length -= static_cast<size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
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

json_object* readValue(int fd) {
    printbuf* const text = printbuf_new();
    if (text == nullptr) {
        return nullptr;
    }
    json_object* const value =
        readAll(fd, text) ? parse(text->buf, printbuf_length(text)) : nullptr;
    printbuf_free(text);
    return value;
}

}  // namespace

json_object* readJsonFile(char const* file) {
    int const fd = file != nullptr ? open(file, O_RDONLY | O_CLOEXEC) : -1;
    if (fd < 0) {
        return nullptr;
    }
    json_object* const value = readValue(fd);
    close(fd);
    return value;
}

int writeJsonFile(char const* file, json_object* value) {
    if (file == nullptr || value == nullptr) {
        return -1;
    }
    size_t length = 0;
    char const* const text =
        json_object_to_json_string_length(value, JSON_C_TO_STRING_PRETTY, &length);
    if (text == nullptr) {
        return -1;
    }
    int const fd = open(file, O_WRONLY | O_TRUNC | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        return -1;
    }
    bool const written = writeAll(fd, text, length);
    return close(fd) == 0 && written ? 0 : -1;
}
