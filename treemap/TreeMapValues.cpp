// Typed values by path: one body per operation over ValueTraits, and its forms for the types.
#include "JsonData.h"
#include "JsonRef.h"
#include "Log.h"
#include "TreeMapObject.h"
#include "ValueTraits.h"

using logging::printable;

namespace {

template <typename T>
void setValue(json_object* document, char const* path, T value) {
    JsonRef const node(ValueTraits<T>::make(value));
    if (isText<T> && !node) {
        UTIL_ERROR("TreeMapObject::setting NULL for string, ignore\n");
        return;
    }
    if (!node || JsonData::setJObj(document, path, node.get()) != 0) {
        UTIL_ERROR(ValueTraits<T>::SET_FAILED, printable(path));
    }
}

// intended: a value of another type is converted by json-c's rules, not replaced by the default.
template <typename T>
T getValue(json_object* document, char const* path) {
    json_object* const node = JsonData::getJObj(document, path);
    if (node == nullptr) {
        UTIL_DEBUG(ValueTraits<T>::MISSING, printable(path));
        return T();
    }
    if (!ValueTraits<T>::accepts(json_object_get_type(node))) {
        UTIL_WARN(ValueTraits<T>::NOT_OF_TYPE, path);
    }
    return ValueTraits<T>::read(node);
}

template <typename T>
bool getChecked(json_object* document, char const* path, T& out) {
    if constexpr (isText<T>) {
        out = nullptr;
    }
    json_object* const node = JsonData::getJObj(document, path);
    if (node == nullptr) {
        UTIL_ERROR(ValueTraits<T>::IS_NULL, printable(path));
        return false;
    }
    if (!ValueTraits<T>::accepts(json_object_get_type(node))) {
        UTIL_WARN(ValueTraits<T>::NOT_OF_TYPE, path);
        return false;
    }
    out = ValueTraits<T>::read(node);
    return true;
}

}  // namespace

template <>
void TreeMapObject::set<int>(char const* path, int value) {
    setValue(jobj, path, value);
}
template <>
void TreeMapObject::set<unsigned int>(char const* path, unsigned int value) {
    setValue(jobj, path, value);
}
template <>
void TreeMapObject::set<char const*>(char const* path, char const* value) {
    setValue(jobj, path, value);
}
template <>
void TreeMapObject::set<double>(char const* path, double value) {
    setValue(jobj, path, value);
}
template <>
void TreeMapObject::set<bool>(char const* path, bool value) {
    setValue(jobj, path, value);
}

template <>
int TreeMapObject::get<int>(char const* path) {
    return getValue<int>(jobj, path);
}
template <>
bool TreeMapObject::get<bool>(char const* path) {
    return getValue<bool>(jobj, path);
}
template <>
double TreeMapObject::get<double>(char const* path) {
    return getValue<double>(jobj, path);
}
template <>
char const* TreeMapObject::get<char const*>(char const* path) {
    return getValue<char const*>(jobj, path);
}

template <>
bool TreeMapObject::get_ex<int>(char const* path, int& out) {
    return getChecked(jobj, path, out);
}
template <>
bool TreeMapObject::get_ex<bool>(char const* path, bool& out) {
    return getChecked(jobj, path, out);
}
template <>
bool TreeMapObject::get_ex<double>(char const* path, double& out) {
    return getChecked(jobj, path, out);
}
template <>
bool TreeMapObject::get_ex<char const*>(char const* path, char const*& out) {
    return getChecked(jobj, path, out);
}
