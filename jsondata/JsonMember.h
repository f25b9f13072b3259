// Members of an object by a name that is a piece of a text. Every function takes any json-c value,
// null included, and treats one that is no object as having no members.
#ifndef VOBIUTILS_JSONDATA_JSONMEMBER_H
#define VOBIUTILS_JSONDATA_JSONMEMBER_H

#include <json-c/json.h>

#include "JsonPath.h"

// Finds a member whose name is not terminated.
lh_entry* scanOrHash(lh_table* members, PathToken name);

// The member's entry in the object, for its value (valueOf) or for another to be put in; null when
// there is no such member. It holds until the object changes.
inline lh_entry* findMember(json_object* container, PathToken name) {
    lh_table* const members = json_object_get_object(container);  // null unless it is an object
    if (members == nullptr) {
        return nullptr;
    }
    if (!name.isTerminated()) {
        return scanOrHash(members, name);
    }
    return lh_table_lookup_entry_w_hash(members, name.start(), lh_get_hash(members, name.start()));
}

// Borrowed; null for JSON null.
inline json_object* valueOf(lh_entry const* member) {
    return static_cast<json_object*>(lh_entry_v(member));
}

// Adds a member that is not there, and takes over the reference on `value`. False when that fails;
// the reference then stays the caller's.
bool addMember(json_object* container, PathToken name, json_object* value);

// Adds or replaces a member, as addMember does. The value replaced is released.
bool putMember(json_object* container, PathToken name, json_object* value);

void deleteMember(json_object* container, PathToken name);

#endif
