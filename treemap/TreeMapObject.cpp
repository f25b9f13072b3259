// The handle itself: its life, what it owns, and its node in the document.
#include "TreeMapObject.h"

#include <stdlib.h>

#include "JsonData.h"
#include "jsondata/JsonLookup.h"
#include "jsondata/JsonMember.h"
#include "logging/Log.h"
#include "treemap/KeyName.h"

using namespace vobiutils;

TreeMapObject::TreeMapObject() : TreeMapObject(static_cast<json_object*>(nullptr)) {}

TreeMapObject::TreeMapObject(bool array)
    : TreeMapObject(array ? json_object_new_array() : json_object_new_object()) {}

TreeMapObject::TreeMapObject(char const* text)
    : TreeMapObject(text != nullptr ? json_tokener_parse(text) : nullptr) {}

TreeMapObject::TreeMapObject(json_object* node)
    : jobj(node), key_obj(), jobj_parent(nullptr), error(0) {}

TreeMapObject::~TreeMapObject() {
    UTIL_DEBUG("%s: this=%p\n", "~TreeMapObject", static_cast<void*>(this));
    if (jobj != nullptr && jobj_parent == nullptr) {
        UTIL_DEBUG("     release jobj=%p\n", static_cast<void*>(jobj));
        json_object_put(jobj);
    } else {
        key_obj[sizeof key_obj - 1] = '\0';
        UTIL_DEBUG("     ignore jobj=%p jobj_parent=%p key_obj=%s\n", static_cast<void*>(jobj),
                   static_cast<void*>(jobj_parent), key_obj);
    }
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
        setKeyName(*this, key);  // intended: this handle is named, not the stored one
        free(const_cast<char*>(key));
    }
}

int TreeMapObject::dump(char const* path) {
    UTIL_INFO("Dump object content:\n");
    return JsonData::dumpObject(this, path);
}

int TreeMapObject::len() {
    array_list const* const elements = json_object_get_array(jobj);  // null unless it is an array
    return elements != nullptr ? static_cast<int>(elements->length) : -1;
}
