// What differs between the C++ types of the typed operations (set, get, get_ex, addArrayItem,
// find): how json-c creates and reads a value, and the words of the log lines. Each operation has
// one body for all types.
#pragma once

#include <json-c/json.h>
#include <stdint.h>

#include <type_traits>

namespace vobiutils {

// The words of a type in log lines, and which nodes hold a value of it.
struct LogWords {
    char const* name;          // in "fail to set NAME value"
    char const* shortName;     // in "is not available, assign default SHORTNAME value
    char const* defaultValue;  // as DEFAULTVALUE"
    char const* nodeType;      // in "is not NODETYPE!"
    char const* addedAs;       // in "fail to add ADDEDAS value to the array"
    bool isString;
    bool (*accepts)(json_type type);
};

template <typename T>
struct ValueTraits;

template <typename T>
inline constexpr bool isCString = std::is_same_v<T, char const*>;

inline bool acceptsNumber(json_type type) {
    return type == json_type_int || type == json_type_double;
}
inline bool acceptsBoolean(json_type type) { return type == json_type_boolean; }
inline bool acceptsString(json_type type) { return type == json_type_string; }

template <>
struct ValueTraits<int> {
    static json_object* make(int value) { return json_object_new_int(value); }
    static int read(json_object* node) { return json_object_get_int(node); }

    static constexpr LogWords WORDS = {"integer", "int", "0",          "number",
                                       "integer", false, acceptsNumber};
};

// intended: stored as a signed number, so that 4294967295 becomes -1.
template <>
struct ValueTraits<unsigned int> : ValueTraits<int> {
    static json_object* make(unsigned int value) {
        return json_object_new_int(static_cast<int>(value));
    }
};

// intended: logged as an int.
template <>
struct ValueTraits<int64_t> : ValueTraits<int> {
    static json_object* make(int64_t value) { return json_object_new_int64(value); }
    static int64_t read(json_object* node) { return json_object_get_int64(node); }
};

template <>
struct ValueTraits<double> {
    static json_object* make(double value) { return json_object_new_double(value); }
    static double read(json_object* node) { return json_object_get_double(node); }

    static constexpr LogWords WORDS = {"double", "double", "0.0",        "number",
                                       "double", false,    acceptsNumber};
};

template <>
struct ValueTraits<bool> {
    static json_object* make(bool value) { return json_object_new_boolean(value); }
    static bool read(json_object* node) { return json_object_get_boolean(node) != 0; }

    static constexpr LogWords WORDS = {"boolean", "bool", "false",       "boolean",
                                       "boolean", false,  acceptsBoolean};
};

template <>
struct ValueTraits<char const*> {
    static json_object* make(char const* value) {
        return value != nullptr ? json_object_new_string(value) : nullptr;
    }
    static char const* read(json_object* node) { return json_object_get_string(node); }

    // intended: a failed addArrayItem of a string is logged as one of a double
    static constexpr LogWords WORDS = {"string", "string", "NULL",       "string",
                                       "double", true,     acceptsString};
};

}  // namespace vobiutils
