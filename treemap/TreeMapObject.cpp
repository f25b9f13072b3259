// The life of a handle: its constructors and its destructor.
#include "TreeMapObject.h"

#include "logging/Log.h"

TreeMapObject::TreeMapObject() : TreeMapObject(static_cast<json_object*>(nullptr)) {}

TreeMapObject::TreeMapObject(bool array)
    : TreeMapObject(array ? json_object_new_array() : json_object_new_object()) {}

TreeMapObject::TreeMapObject(char const* text)
    : TreeMapObject(text != nullptr ? json_tokener_parse(text) : nullptr) {}

TreeMapObject::TreeMapObject(json_object* node)
    : jobj(node), key_obj(), jobj_parent(nullptr), error(0) {}

TreeMapObject::~TreeMapObject() {
    UTIL_HOT_DEBUG("%s: this=%p\n", "~TreeMapObject", static_cast<void*>(this));
    if (jobj != nullptr && jobj_parent == nullptr) {
        UTIL_HOT_DEBUG("     release jobj=%p\n", static_cast<void*>(jobj));
        json_object_put(jobj);
    } else {
        key_obj[sizeof key_obj - 1] = '\0';
        UTIL_HOT_DEBUG("     ignore jobj=%p jobj_parent=%p key_obj=%s\n", static_cast<void*>(jobj),
                       static_cast<void*>(jobj_parent), key_obj);
    }
}
