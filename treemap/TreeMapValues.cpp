// Typed values by path: set, get and get_ex. Each has one body over ValueTraits, and a
// specialization for each type that calls it.
#include "JsonData.h"
#include "TreeMapObject.h"
#include "jsondata/JsonAssign.h"
#include "logging/Log.h"
#include "treemap/TypedValues.h"

using namespace vobiutils;

namespace {

// Takes over the reference on `node`; it is null for a null string, or when out of memory.
void setNode(json_object* document, char const* path, json_object* node, LogWords const& words) {
    if (words.isString && node == nullptr) {
        UTIL_ERROR("TreeMapObject::setting NULL for string, ignore\n");
        return;
    }
    if (node == nullptr || !assign(document, path, node)) {
        UTIL_ERROR("TreeMapObject::set: fail to set %s value to %s\n", words.name, printable(path));
    }
}

template <typename T>
void setValue(json_object* document, char const* path, T value) {
    setNode(document, path, ValueTraits<T>::make(value), ValueTraits<T>::WORDS);
}

}  // namespace

json_object* vobiutils::getNode(json_object* document, char const* path, LogWords const& words) {
    json_object* const node = JsonData::getJObj(document, path);
    if (node == nullptr) {
        UTIL_DEBUG("object '%s' is not available, assign default %s value as %s\n", printable(path),
                   words.shortName, words.defaultValue);
    } else if (!words.accepts(json_object_get_type(node))) {
        UTIL_WARN("object '%s' is not %s!\n", path, words.nodeType);
    }
    return node;
}

json_object* vobiutils::getNodeOfType(json_object* document, char const* path,
                                      LogWords const& words) {
    json_object* const node = JsonData::getJObj(document, path);
    if (node == nullptr) {
        UTIL_ERROR("Cannot get %s value for object %s due to the attribute is NULL\n", words.name,
                   printable(path));
        return nullptr;
    }
    if (!words.accepts(json_object_get_type(node))) {
        UTIL_WARN("object '%s' is not %s!\n", path, words.nodeType);
        return nullptr;
    }
    return node;
}

template <>
void TreeMapObject::set<int>(char const* path, int value) {
    setValue(jobj, path, value);
}
template <>
void TreeMapObject::set<unsigned int>(char const* path, unsigned int value) {
    setValue(jobj, path, value);
}
template <>
void TreeMapObject::set<int64_t>(char const* path, int64_t value) {
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
int64_t TreeMapObject::get<int64_t>(char const* path) {
    return getValue<int64_t>(jobj, path);
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
bool TreeMapObject::get_ex<int64_t>(char const* path, int64_t& out) {
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
