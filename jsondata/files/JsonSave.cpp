#include "jsondata/files/JsonSave.h"

#include <errno.h>
#include <stddef.h>

namespace vobiutils {

namespace {

// Whether a reader gets as deep as `value` is nested: it opens one container less than its depth
// above a value.
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

// Null when memory runs out. json-c then leaves out of the text what finds no room, and goes on;
// only errno tells. It may also tell of a failure that was got over: in the second pass there is
// room already.
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

int saveJsonFile(char const* name, json_object* value, Durability durability) {
    if (name == nullptr || value == nullptr || !isReadable(value)) {
        return -1;
    }
    size_t length = 0;
    char const* const text = prettyText(value, length);
    return text != nullptr && replaceFile(name, text, length, durability) ? 0 : -1;
}

}  // namespace vobiutils
