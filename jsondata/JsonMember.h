// Members of an object, by a token of a path: finding, adding, replacing and deleting them. Every
// function takes any json-c value, null included; one that is not an object has no members and gets
// none.
//
// Only JsonMember, JsonElement and JsonChildren use the inside of json-c's containers (linkhash.h,
// arraylist.h). The other files go through json-c's documented functions.
#ifndef VOBIUTILS_JSONDATA_JSONMEMBER_H
#define VOBIUTILS_JSONDATA_JSONMEMBER_H

#include <json-c/json.h>

#include <optional>

#include "jsondata/JsonPath.h"
#include "jsondata/JsonRef.h"

namespace vobiutils {

// The value of the member called `name`, borrowed; it is null for JSON null. Nothing when there is
// no such member.
std::optional<json_object*> findMember(json_object* container, PathToken name);

// Adds a member that does not exist yet, and takes over the caller's reference on `value`. False,
// and the reference stays the caller's, when out of memory, for a container that is not an object,
// and when `value` is the container itself.
bool addMember(json_object* container, PathToken name, json_object* value);

// Adds a member, or replaces its value if it exists; otherwise as addMember. `replaced` receives
// the document's reference on the value replaced.
bool putMember(json_object* container, PathToken name, json_object* value, JsonRef& replaced);

// Deletes a member, if it exists, and releases its value.
void deleteMember(json_object* container, PathToken name);

}  // namespace vobiutils

#endif
