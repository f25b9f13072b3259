// What differs between the value types of the typed operations: how json-c makes and reads them,
// and the texts of their log lines.
#ifndef VOBIUTILS_TREEMAP_VALUETRAITS_H
#define VOBIUTILS_TREEMAP_VALUETRAITS_H

#include <json-c/json.h>

#include <type_traits>

template <typename T>
struct ValueTraits;

template <typename T>
inline constexpr bool isText = std::is_same_v<T, char const*>;

inline bool isNumber(json_type type) { return type == json_type_int || type == json_type_double; }

template <>
struct ValueTraits<int> {
    static json_object* make(int value) { return json_object_new_int(value); }
    static int read(json_object* node) { return json_object_get_int(node); }
    static bool accepts(json_type type) { return isNumber(type); }

    static constexpr char MISSING[] =
        "object '%s' is not available, assign default int value as 0\n";
    static constexpr char NOT_OF_TYPE[] = "object '%s' is not number!\n";
    static constexpr char IS_NULL[] =
        "Cannot get integer value for object %s due to the attribute is NULL\n";
    static constexpr char SET_FAILED[] = "TreeMapObject::set: fail to set integer value to %s\n";
    static constexpr char ADD_FAILED[] =
        "TreeMapObject::set: fail to add integer value to the array\n";
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
    static bool accepts(json_type type) { return isNumber(type); }

    static constexpr char MISSING[] =
        "object '%s' is not available, assign default double value as 0.0\n";
    static constexpr char NOT_OF_TYPE[] = "object '%s' is not number!\n";
    static constexpr char IS_NULL[] =
        "Cannot get double value for object %s due to the attribute is NULL\n";
    static constexpr char SET_FAILED[] = "TreeMapObject::set: fail to set double value to %s\n";
    static constexpr char ADD_FAILED[] =
        "TreeMapObject::set: fail to add double value to the array\n";
};

template <>
struct ValueTraits<bool> {
    static json_object* make(bool value) { return json_object_new_boolean(value); }
    static bool read(json_object* node) { return json_object_get_boolean(node) != 0; }
    static bool accepts(json_type type) { return type == json_type_boolean; }

    static constexpr char MISSING[] =
        "object '%s' is not available, assign default bool value as false\n";
    static constexpr char NOT_OF_TYPE[] = "object '%s' is not boolean!\n";
    static constexpr char IS_NULL[] =
        "Cannot get boolean value for object %s due to the attribute is NULL\n";
    static constexpr char SET_FAILED[] = "TreeMapObject::set: fail to set boolean value to %s\n";
    static constexpr char ADD_FAILED[] =
        "TreeMapObject::set: fail to add boolean value to the array\n";
};

template <>
struct ValueTraits<char const*> {
    static json_object* make(char const* value) {
        return value != nullptr ? json_object_new_string(value) : nullptr;
    }
    static char const* read(json_object* node) { return json_object_get_string(node); }
    static bool accepts(json_type type) { return type == json_type_string; }

    static constexpr char MISSING[] =
        "object '%s' is not available, assign default string value as NULL\n";
    static constexpr char NOT_OF_TYPE[] = "object '%s' is not string!\n";
    static constexpr char IS_NULL[] =
        "Cannot get string value for object %s due to the attribute is NULL\n";
    static constexpr char SET_FAILED[] = "TreeMapObject::set: fail to set string value to %s\n";
    static constexpr char ADD_FAILED[] =  // intended: the text of the doubles
        "TreeMapObject::set: fail to add double value to the array\n";
};

#endif
