// The form of a path that can be read in one way only.
#include <stddef.h>
#include <string.h>

#include "JsonData.h"
#include "jsondata/Utf8.h"

using namespace vobiutils;

namespace {

int const MAX_STEPS = JSON_TOKENER_DEFAULT_DEPTH - 1;  // as many containers as a file may hold

// Of the token [at, end), as are the others.
bool isIndexToken(char const* at, char const* end) {
    char const largest[] = "2147483647";
    size_t const most = sizeof largest - 1;
    ++at;
    size_t const digits = strspn(at, "0123456789");
    return at + digits + 1 == end && at[digits] == ']' && digits > 0 &&
           (*at != '0' || digits == 1) &&
           (digits < most || (digits == most && memcmp(at, largest, most) <= 0));
}

// UTF-8 without control characters, those of 0x80 to 0x9f included.
bool isNameToken(char const* at, char const* end) {
    bool const isEmpty = at == end;
    while (at < end) {
        size_t const length = characterLength(at, end);
        unsigned char const first = static_cast<unsigned char>(*at);
        bool const isControl = first < ' ' || first == 0x7f ||
                               (first == 0xc2 && static_cast<unsigned char>(at[1]) < 0xa0);
        if (length == 0 || isControl) {
            return false;
        }
        at += length;
    }
    return !isEmpty;
}

// Unlike PathCursor this takes a dot at the end for an empty token.
bool isWellFormed(char const* path) {
    for (int steps = 1; steps <= MAX_STEPS; ++steps) {
        char const* const end = strchrnul(path, '.');
        if (*path == '[' ? !isIndexToken(path, end) : !isNameToken(path, end)) {
            return false;
        }
        if (*end == '\0') {
            return true;
        }
        path = end + 1;
    }
    return false;
}

}  // namespace

bool JsonData::isPath(char const* path) {
    return path != nullptr && (*path == '\0' || isWellFormed(path));
}
