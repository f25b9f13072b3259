// A handle's node and the nodes under it: storing, removing and dumping them by path, and the new
// handles on them.
#include <stdlib.h>

#include <new>
#include <optional>

#include "JsonData.h"
#include "TreeMapObject.h"
#include "jsondata/JsonElement.h"
#include "jsondata/JsonLookup.h"
#include "jsondata/JsonMember.h"
#include "jsondata/OutOfMemory.h"
#include "logging/Log.h"
#include "treemap/HandleKey.h"
#include "treemap/NewHandle.h"

using namespace vobiutils;

TreeMapObject* vobiutils::tryOwningHandle(json_object* node) {
    TreeMapObject* const handle = new (std::nothrow) TreeMapObject(node);
    if (handle == nullptr) {
        json_object_put(node);
    }
    return handle;
}

TreeMapObject* vobiutils::newOwningHandle(json_object* node) {
    TreeMapObject* const handle = tryOwningHandle(node);
    if (handle == nullptr) {
        throwBadAlloc();
    }
    return handle;
}

bool vobiutils::tryGet(json_object* root, char const* path, TreeMapObject*& node) {
    Lookup const found = lookUp(root, path);
    TreeMapObject* const handle =
        found.value != nullptr ? new (std::nothrow) TreeMapObject(found.value) : nullptr;
    if (handle == nullptr) {
        node = found.value == nullptr ? nullptr : node;
        return found.value == nullptr;
    }
    if (found.outcome == Lookup::ROOT) {
        json_object_get(found.value);  // a second owner, so that either handle may be deleted first
    } else {
        handle->jobj_parent = found.parent;
        setKey(*handle, found.last.text());
    }
    node = handle;
    return true;
}

void TreeMapObject::del(char const* path) {
    Lookup const found = lookUp(jobj, path);
    if (found.value != nullptr && found.outcome == Lookup::ENDED) {
        deleteMember(found.parent, found.last);
    }
}

void TreeMapObject::set(char const* path, TreeMapObject* obj) {
    UTIL_DEBUG("TreeMapObject::set: %s %p\n", printable(path), static_cast<void*>(obj));
    if (obj == nullptr) {
        UTIL_ERROR("TreeMapObject::set: obj=null\n");
        return;
    }
    json_object* parent = nullptr;
    char const* key = nullptr;
    if (JsonData::setJObj(jobj, path, obj->jobj, parent, key) != 0) {
        UTIL_ERROR("TreeMapObject::set: fail to set object value to %s\n", printable(path));
    }
    if (parent != nullptr && key != nullptr) {
        setKey(*this, key);  // intended: the key of this handle is set, not of the stored one
        free(const_cast<char*>(key));
    }
}

TreeMapObject* TreeMapObject::get(char const* path) {
    TreeMapObject* node = nullptr;
    if (!tryGet(jobj, path, node)) {
        throwBadAlloc();
    }
    return node;
}

int TreeMapObject::dump(char const* path) {
    UTIL_INFO("Dump object content:\n");
    return JsonData::dumpObject(this, path);
}

int TreeMapObject::len() {
    std::optional<size_t> const count = elementCount(jobj);
    return count ? static_cast<int>(*count) : -1;
}

TreeMapObject* TreeMapObject::clone(char const* path) {
    json_object* const source = path == nullptr ? jobj : JsonData::getJObj(jobj, path);
    if (source == nullptr) {
        UTIL_ERROR("%s: fail to get object by path\n", "clone");
        return nullptr;
    }
    json_object* const copy = JsonData::cloneObject(source);
    if (copy == nullptr) {
        UTIL_ERROR("%s: fail to clone object\n", "clone");
        return nullptr;
    }
    return newOwningHandle(copy);
}

TreeMapObject* TreeMapObject::at(unsigned int index) {
    if (index >= elementCount(jobj).value_or(0)) {
        return nullptr;
    }
    TreeMapObject* const element = new TreeMapObject(json_object_array_get_idx(jobj, index));
    element->jobj_parent = jobj;
    setIndexKey(*element, index);
    return element;
}
