// Members of an object by a name that is a piece of a text. Every function takes any json-c value,
// null included, and treats one that is no object as having no members.
#ifndef VOBIUTILS_JSONDATA_JSONMEMBER_H
#define VOBIUTILS_JSONDATA_JSONMEMBER_H

#include <json-c/json.h>

#include "jsondata/JsonPath.h"

namespace vobiutils {

// Where a member stands in an object, or would.
struct MemberPlace {
    // For its value (valueOf) or for another to be put in; null when there is no such member. It
    // holds until the object changes.
    lh_entry* entry = nullptr;
    unsigned long hash = 0;  // of the name, or 0 when it was found without
};

// The longest name that is copied to the stack, not to the heap.
inline constexpr size_t NAME_ON_STACK = 127;

lh_entry* findByScan(lh_table* members, PathToken name);

// For a terminated name.
inline MemberPlace findByHash(lh_table* members, char const* name) {
    unsigned long const hash = lh_get_hash(members, name);
    return {lh_table_lookup_entry_w_hash(members, name, hash), hash};
}

// For a name of up to NAME_ON_STACK characters.
MemberPlace findByHashOfCopy(lh_table* members, std::string_view name);

// A hash asks for one member, a scan for every one up to the member sought, and no processor can
// foretell which that is. A scan is faster all the same among very few, and among some more where
// the name would have to be copied first: hashing has to wait for the copy. A very long name is not
// worth a heap block either.
inline bool isScanned(lh_table const* members, PathToken name) {
    if (name.isTerminated()) {
        return members->count <= 6;
    }
    return members->count <= 10 || name.text().size() > NAME_ON_STACK;
}

inline MemberPlace findMember(json_object* container, PathToken name) {
    lh_table* const members = json_object_get_object(container);  // null unless it is an object
    if (members == nullptr) {
        return {};
    }
    if (isScanned(members, name)) {
        return {findByScan(members, name), 0};
    }
    return name.isTerminated() ? findByHash(members, name.start())
                               : findByHashOfCopy(members, name.text());
}

// Borrowed; null for JSON null.
inline json_object* valueOf(lh_entry const* member) {
    return static_cast<json_object*>(lh_entry_v(member));
}

// Adds a member that findMember did not find, with the hash that it has told, and takes over the
// reference on `value`. False when that fails; the reference then stays the caller's.
bool addMember(json_object* container, PathToken name, unsigned long hash, json_object* value);

// Adds or replaces a member, as addMember does, by a value that is not the container itself. The
// value replaced is released.
bool putMember(json_object* container, PathToken name, json_object* value);

void deleteMember(json_object* container, PathToken name);

}  // namespace vobiutils

#endif
