// Whatever a path names: whether it is there, removing it, and merging into it; and the removal of
// members by name.
#include "TreeMapObject.h"
#include "jsondata/JsonAssign.h"
#include "jsondata/JsonChildren.h"
#include "jsondata/JsonMember.h"
#include "jsondata/JsonRef.h"
#include "treemap/Place.h"

using namespace vobiutils;

namespace {

int const MERGED = 0;
int const FAILED = 2;

bool isObject(json_object* value) { return json_object_is_type(value, json_type_object) != 0; }

int removeFrom(json_object* value, PathToken name) {
    int count = deleteMember(value, name) ? 1 : 0;
    for (Children children(value); children.next();) {
        count += removeFrom(children.value(), name);
    }
    return count;
}

// Merges `patch` into `target`, which both are objects. False when out of memory.
bool mergeObjects(json_object* target, json_object* patch);

// Gives what a value becomes that is not merged in place: an object of the patch without its nulls,
// or another reference on any other value of it. False when out of memory.
bool replaceBy(json_object* patch, JsonRef& value) {
    if (!isObject(patch)) {
        value.reset(json_object_get(patch));
        return true;
    }
    value.reset(json_object_new_object());
    return value && mergeObjects(value.get(), patch);
}

bool mergeMember(json_object* target, PathToken name, json_object* patch) {
    if (patch == nullptr) {
        deleteMember(target, name);
        return true;
    }
    json_object* const old = findMember(target, name).value();
    if (isObject(old) && isObject(patch)) {
        return mergeObjects(old, patch);
    }
    JsonRef value(nullptr);
    JsonRef replaced(nullptr);
    if (!replaceBy(patch, value) || !putMember(target, name, value.get(), replaced)) {
        return false;
    }
    value.release();
    return true;
}

bool mergeObjects(json_object* target, json_object* patch) {
    for (Children children(patch); children.next();) {
        if (!mergeMember(target, PathToken(children.step().name), children.value())) {
            return false;
        }
    }
    return true;
}

}  // namespace

TreeMapObject::Presence TreeMapObject::presence(char const* path) {
    return findPlace(jobj, path).presence;
}

bool TreeMapObject::remove(char const* path) {
    Place const place = findPlace(jobj, path);
    if (place.presence != PRESENT || place.parent == nullptr) {
        return false;
    }
    if (place.last.isIndex()) {
        return json_object_array_del_idx(place.parent, place.index, 1) == 0;
    }
    deleteMember(place.parent, place.last);
    return true;
}

int TreeMapObject::removeAll(char const* name) {
    return name != nullptr ? removeFrom(jobj, PathToken(name)) : 0;
}

int TreeMapObject::merge(char const* path, TreeMapObject* patch) {
    Place const place = findPlace(jobj, path);
    if (patch == nullptr || place.presence == IMPOSSIBLE) {
        return FAILED;
    }
    if (isObject(place.value) && isObject(patch->jobj)) {
        return mergeObjects(place.value, patch->jobj) ? MERGED : FAILED;
    }
    JsonRef value(nullptr);
    if (!replaceBy(patch->jobj, value)) {
        return FAILED;
    }
    if (*path != '\0') {
        return assign(jobj, path, value.release()) ? MERGED : FAILED;
    }
    if (jobj_parent != nullptr) {
        return FAILED;
    }
    JsonRef const former(jobj);
    jobj = value.release();
    return MERGED;
}
