// Members of an object by a name that is not terminated. Every function takes any json-c value,
// null included, and treats one that is no object as having no members.
#ifndef VOBIUTILS_JSONDATA_JSONMEMBER_H
#define VOBIUTILS_JSONDATA_JSONMEMBER_H

#include <json-c/json.h>

#include <string_view>

// True when the member exists; `value` then receives it, borrowed, null for JSON null.
bool findMember(json_object* container, std::string_view name, json_object*& value);

// Adds or replaces a member and takes over the reference on `value`. False when that fails; the
// reference then stays the caller's.
bool addMember(json_object* container, std::string_view name, json_object* value);

void deleteMember(json_object* container, std::string_view name);

#endif
