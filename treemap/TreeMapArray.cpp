// A handle's node as an array: storing, appending and removing elements.
#include "TreeMapObject.h"
#include "jsondata/JsonAssign.h"
#include "jsondata/JsonMember.h"
#include "jsondata/JsonRef.h"
#include "logging/Log.h"
#include "treemap/HandleKey.h"
#include "treemap/ValueTraits.h"

using namespace vobiutils;

namespace {

bool hasElement(TreeMapObject& array, unsigned int index) {
    int const length = array.len();
    return length >= 0 && index < static_cast<unsigned int>(length);
}

// Replaces element `index`, or appends when there is none. Takes over the reference on `node` when
// that succeeds.
bool store(json_object* array, unsigned int index, json_object* node) {
    return index < json_object_array_length(array)
               ? json_object_array_put_idx(array, index, node) == 0
               : json_object_array_add(array, node) == 0;
}

// Takes over the reference on `node`; it is null for a null string, or when out of memory.
int addNode(TreeMapObject& array, int length, json_object* node, LogWords const& words) {
    if (words.isString && node == nullptr) {
        UTIL_ERROR("TreeMapObject::setting NULL for string, ignore\n");
        return -1;
    }
    if (node == nullptr ||
        !assign(array.jobj, indexKey(static_cast<unsigned int>(length)).text, node)) {
        UTIL_ERROR("TreeMapObject::set: fail to add %s value to the array\n", words.addedAs);
        return -1;
    }
    return length;
}

template <typename T>
int addValue(TreeMapObject& array, T value) {
    int const length = array.len();
    return length >= 0 ? addNode(array, length, ValueTraits<T>::make(value), ValueTraits<T>::WORDS)
                       : -1;
}

// Appends to `to` every element of `from` except the one at `omitted`, each with another reference.
bool copyElements(json_object* from, unsigned int omitted, json_object* to) {
    size_t const length = json_object_array_length(from);
    for (size_t i = 0; i < length; ++i) {
        if (i == omitted) {
            continue;
        }
        JsonRef element = JsonRef::share(json_object_array_get_idx(from, i));
        if (json_object_array_add(to, element.get()) != 0) {
            return false;
        }
        element.release();
    }
    return true;
}

// Puts another array in the place of the handle's: in its parent under the handle's key, or as what
// the handle owns. False when the parent is not an object: in an array, the array has no member
// name to be replaced under.
bool replaceArray(TreeMapObject& handle, JsonRef& replacement) {
    JsonRef replaced(nullptr);
    if (handle.jobj_parent == nullptr) {
        replaced.reset(handle.jobj);
    } else if (Key const key = keyOf(handle);
               !putMember(handle.jobj_parent, PathToken(key.text), replacement.get(), replaced)) {
        return false;
    }
    handle.jobj = replacement.release();
    return true;
}

}  // namespace

// intended: an index past the end appends, without a gap.
int TreeMapObject::setArrayItem(unsigned int index, TreeMapObject* item) {
    int const length = len();
    if (item == nullptr || item->jobj == nullptr || length < 0) {
        return -1;
    }
    JsonRef node = JsonRef::share(item->jobj);
    if (!store(jobj, index, node.get())) {
        return -1;
    }
    node.release();
    unsigned int const end = static_cast<unsigned int>(length);
    int const position = static_cast<int>(index < end ? index : end);
    setIndexKey(*item, static_cast<unsigned int>(position));
    return position;
}

int TreeMapObject::addArrayItem(TreeMapObject* item) { return setArrayItem(~0U, item); }

template <>
int TreeMapObject::addArrayItem<int>(int value) {
    return addValue(*this, value);
}
template <>
int TreeMapObject::addArrayItem<bool>(bool value) {
    return addValue(*this, value);
}
template <>
int TreeMapObject::addArrayItem<double>(double value) {
    return addValue(*this, value);
}
template <>
int TreeMapObject::addArrayItem<char const*>(char const* value) {
    return addValue(*this, value);
}

// Does not remove in place, but replaces the array by a copy without the element:
//
//   delArrayItem(1)    before    {"list": A}    A = [x, y, z]
//                      after     {"list": B}    B = [x, z]; the handle is on B
//
// So an array whose parent is an array, too, is refused, see replaceArray.
int TreeMapObject::delArrayItem(unsigned int index) {
    if (!hasElement(*this, index)) {
        return -1;
    }
    JsonRef rest(json_object_new_array());
    if (!rest) {
        UTIL_ERROR("Cannot create a backup array due to memory error");
        return -1;
    }
    if (!copyElements(jobj, index, rest.get()) || !replaceArray(*this, rest)) {
        return -1;
    }
    return len();
}

int TreeMapObject::clearArrayItems() {
    if (len() < 0) {
        return -1;
    }
    JsonRef empty(json_object_new_array());
    if (!empty) {
        UTIL_ERROR("%s: failed to create new array object!\n", "clearArrayItems");
        return -1;
    }
    return replaceArray(*this, empty) ? 0 : -1;
}
