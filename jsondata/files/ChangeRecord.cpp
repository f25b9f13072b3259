// A record is read loosely, printed again, and believed only if that gives the same bytes.
#include "jsondata/files/ChangeRecord.h"

#include <assert.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "jsondata/files/FileBytes.h"

namespace vobiutils {

namespace {

char const HEADING[] = "change 1\n";
char const RENAME[] = "rename ";
char const WRITE[] = "write ";

// Whether the `length` characters are the name of a folder or a file, and of no other one.
bool isPart(char const* part, size_t length) {
    bool const isDots = length <= 2 && strncmp(part, "..", length) == 0;
    for (size_t i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(part[i]) < ' ') {
            return false;
        }
    }
    return length > 0 && !isDots;
}

bool isBelow(char const* name) {
    if (strchr(name, '/') == nullptr) {
        return false;  // the names of the change itself are in the folder
    }
    for (char const* part = name;; ++part) {
        size_t const length = static_cast<size_t>(strchrnul(part, '/') - part);
        if (!isPart(part, length)) {
            return false;
        }
        part += length;
        if (*part == '\0') {
            return true;
        }
    }
}

bool skip(char const*& text, char const* word) {
    size_t const length = strlen(word);
    bool const isThere = strncmp(text, word, length) == 0;
    text += isThere ? length : 0;
    return isThere;
}

uint64_t readNumber(char const*& text) {
    char* end = nullptr;
    uint64_t const number = strtoull(text, &end, 16);
    text = *end == ' ' ? end + 1 : end;
    return number;
}

}  // namespace

bool ChangeRecord::add(char const* name, uint64_t had, uint64_t gets, bool isInPlace) {
    if (count_ == MOST || strlen(name) >= sizeof files_[0].name || !isBelow(name)) {
        return false;
    }
    for (int i = 0; i < count_; ++i) {
        if (strcmp(files_[i].name, name) == 0) {
            return false;
        }
    }
    File& file = files_[count_++];
    file = {had, gets, isInPlace, ""};
    strcpy(file.name, name);
    return true;
}

size_t ChangeRecord::print(char (&text)[SIZE]) const {
    size_t length = static_cast<size_t>(snprintf(text, SIZE, "%s", HEADING));
    for (int i = 0; i < count_; ++i) {
        File const& file = files_[i];
        length += static_cast<size_t>(
            snprintf(text + length, SIZE - length, "%s%016" PRIx64 " %016" PRIx64 " %s\n",
                     file.isInPlace ? WRITE : RENAME, file.had, file.gets, file.name));
    }
    uint64_t const sum = hashOf(text, length);
    length +=
        static_cast<size_t>(snprintf(text + length, SIZE - length, "sum %016" PRIx64 "\n", sum));
    assert(length < SIZE);  // nothing was cut
    return length;
}

bool ChangeRecord::parseLine(char const* line) {
    bool const isInPlace = skip(line, WRITE);
    if (!isInPlace && !skip(line, RENAME)) {
        return false;
    }
    uint64_t const had = readNumber(line);
    uint64_t const gets = readNumber(line);
    char name[sizeof files_[0].name];
    size_t const length = static_cast<size_t>(strchrnul(line, '\n') - line);
    if (length >= sizeof name) {
        return false;
    }
    memcpy(name, line, length);
    name[length] = '\0';
    return add(name, had, gets, isInPlace);
}

bool ChangeRecord::parse(char const* text) {
    assert(count_ == 0);
    char const* line = text;
    if (!skip(line, HEADING)) {
        return false;
    }
    while (parseLine(line)) {
        line = strchrnul(line, '\n');
        line += *line == '\n' ? 1 : 0;
    }
    char again[SIZE];
    return count_ > 0 && strlen(text) == print(again) && strcmp(text, again) == 0;
}

}  // namespace vobiutils
