// Reads json-c values without changing them: json-c's own json_object_to_json_string, and its
// json_object_get_string on anything but a string, store their text in the value, which other
// threads may be reading.
#pragma once

#include <json-c/json.h>
#include <string.h>

#include <string_view>

#include "jsondata/files/JsonTable.h"

namespace jsonschema {

inline bool is(json_object* value, json_type type) { return json_object_is_type(value, type) != 0; }

inline bool isNumber(json_type type) { return type == json_type_int || type == json_type_double; }

// The characters of a value that is known to be a string.
inline std::string_view charactersOf(json_object* string) {
    return {json_object_get_string(string),
            static_cast<size_t>(json_object_get_string_len(string))};
}

// The characters of a string; empty for any other value.
inline std::string_view textOf(json_object* value) {
    return is(value, json_type_string) ? charactersOf(value) : std::string_view();
}

inline size_t lengthOf(json_object* array) { return json_object_array_length(array); }

inline json_object* elementOf(json_object* array, size_t index) {
    return json_object_array_get_idx(array, index);
}

inline size_t memberCount(json_object* object) {
    return static_cast<size_t>(json_object_object_length(object));
}

inline lh_entry* firstMember(json_object* object) {
    return lh_table_head(json_object_get_object(object));
}

inline char const* nameOf(lh_entry* member) { return static_cast<char const*>(lh_entry_k(member)); }

inline json_object* valueOf(lh_entry* member) {
    return static_cast<json_object*>(lh_entry_v(member));
}

// Null when there is none, or `object` is not an object.
lh_entry* findMember(json_object* object, char const* name);

// The value of a member; null also for JSON null.
inline json_object* memberOf(json_object* object, char const* name) {
    lh_entry* const member = findMember(object, name);
    return member != nullptr ? valueOf(member) : nullptr;
}

}  // namespace jsonschema
