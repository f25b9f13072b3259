// Checks that a value can be read back, serializes it, and replaces the file.
#include "jsondata/files/JsonSave.h"

#include <errno.h>
#include <stddef.h>

#include "jsondata/files/FileBytes.h"

namespace vobiutils {

namespace {

// Whether json-c's parser, with its default depth limit, could read `value` back. With a limit of
// 32 it opens at most 31 containers above a value.
bool isReadable(json_object* value, int depth = JSON_TOKENER_DEFAULT_DEPTH) {
    if (depth == 0) {
        return false;
    }
    if (json_object_is_type(value, json_type_object)) {
        json_object_iter member = {};
        json_object_object_foreachC(value, member) {
            if (!isReadable(member.val, depth - 1)) {
                return false;
            }
        }
    } else if (json_object_is_type(value, json_type_array)) {
        size_t const length = json_object_array_length(value);
        for (size_t i = 0; i < length; ++i) {
            if (!isReadable(json_object_array_get_idx(value, i), depth - 1)) {
                return false;
            }
        }
    }
    return true;
}

// Null when out of memory. json-c silently drops whatever does not fit and carries on; only errno
// tells. errno may also be left over from an allocation that json-c has recovered from, hence a
// second pass, for which the buffer is already large enough.
char const* prettyText(json_object* value, size_t& length) {
    for (int pass = 0; pass < 2; ++pass) {
        errno = 0;
        char const* const text =
            json_object_to_json_string_length(value, JSON_C_TO_STRING_PRETTY, &length);
        if (errno != ENOMEM) {
            return text;
        }
    }
    return nullptr;
}

}  // namespace

char const* savedText(json_object* value, size_t& length) {
    return isReadable(value) ? prettyText(value, length) : nullptr;
}

int saveJsonFile(char const* name, json_object* value, Durability durability, uint64_t* version) {
    if (name == nullptr || value == nullptr) {
        return -1;
    }
    size_t length = 0;
    char const* const text = savedText(value, length);
    if (text == nullptr || !replaceFile(name, text, length, durability)) {
        return -1;
    }
    if (version != nullptr) {
        *version = hashOf(text, length);
    }
    return 0;
}

}  // namespace vobiutils
