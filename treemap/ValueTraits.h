// What differs between the value types of the typed operations: how json-c makes and reads them, and
// the words of their log lines.
#ifndef VOBIUTILS_TREEMAP_VALUETRAITS_H
#define VOBIUTILS_TREEMAP_VALUETRAITS_H

#include <json-c/json.h>

#include <type_traits>

namespace vobiutils {

// The operations themselves have one body for all types.
struct ValueWords {
    char const* name;          // in what could not be done
    char const* shortName;     // in what is missing,
    char const* defaultValue;  // and taken instead
    char const* kind;          // what a node should have been
    char const* addedAs;       // in what could not be added to an array
    bool isText;
    bool (*accepts)(json_type type);
};

template <typename T>
struct ValueTraits;

template <typename T>
inline constexpr bool isText = std::is_same_v<T, char const*>;

inline bool isNumber(json_type type) { return type == json_type_int || type == json_type_double; }
inline bool isBoolean(json_type type) { return type == json_type_boolean; }
inline bool isString(json_type type) { return type == json_type_string; }

template <>
struct ValueTraits<int> {
    static json_object* make(int value) { return json_object_new_int(value); }
    static int read(json_object* node) { return json_object_get_int(node); }

    static constexpr ValueWords WORDS = {"integer", "int", "0",     "number",
                                         "integer", false, isNumber};
};

// intended: stored as a signed number, so that 4294967295 becomes -1.
template <>
struct ValueTraits<unsigned int> : ValueTraits<int> {
    static json_object* make(unsigned int value) {
        return json_object_new_int(static_cast<int>(value));
    }
};

template <>
struct ValueTraits<double> {
    static json_object* make(double value) { return json_object_new_double(value); }
    static double read(json_object* node) { return json_object_get_double(node); }

    static constexpr ValueWords WORDS = {"double", "double", "0.0",   "number",
                                         "double", false,    isNumber};
};

template <>
struct ValueTraits<bool> {
    static json_object* make(bool value) { return json_object_new_boolean(value); }
    static bool read(json_object* node) { return json_object_get_boolean(node) != 0; }

    static constexpr ValueWords WORDS = {"boolean", "bool", "false",  "boolean",
                                         "boolean", false,  isBoolean};
};

template <>
struct ValueTraits<char const*> {
    static json_object* make(char const* value) {
        return value != nullptr ? json_object_new_string(value) : nullptr;
    }
    static char const* read(json_object* node) { return json_object_get_string(node); }

    // intended: added as a double
    static constexpr ValueWords WORDS = {"string", "string", "NULL",  "string",
                                         "double", true,     isString};
};

}  // namespace vobiutils

#endif
