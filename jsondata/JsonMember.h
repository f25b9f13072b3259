// Members of an object, by a token of a path: finding, adding, replacing and deleting them. Every
// function takes any json-c value, null included; one that is not an object has no members and gets
// none.
//
// Only JsonMember, JsonElement and JsonChildren use the inside of json-c's containers (linkhash.h,
// arraylist.h). The other files go through json-c's documented functions.
#pragma once

#include <json-c/json.h>

#include "jsondata/JsonPath.h"
#include "jsondata/JsonRef.h"

namespace vobiutils {

// A member of an object, or none, as long as the object does not change. Not a std::optional of the
// value: g++ 12 returns that by way of the stack, one byte written and eight read, for which the
// processor has to wait. Finding one of 16 members took 32 ns instead of 24.
class Member {
  public:
    explicit Member(lh_entry* entry) : entry_(entry) {}

    explicit operator bool() const { return entry_ != nullptr; }
    lh_entry* entry() const { return entry_; }

    // Borrowed; null for JSON null, and when there is no member.
    json_object* value() const {
        return entry_ != nullptr ? static_cast<json_object*>(lh_entry_v(entry_)) : nullptr;
    }

  private:
    lh_entry* entry_;
};

Member findMember(json_object* container, PathToken name);

// Adds a member that does not exist yet, and takes over the caller's reference on `value`. False,
// and the reference stays the caller's, when out of memory, for a container that is not an object,
// and when `value` is the container itself.
bool addMember(json_object* container, PathToken name, json_object* value);

// Adds a member, or replaces its value if it exists; otherwise as addMember. `replaced` receives
// the document's reference on the value replaced.
bool putMember(json_object* container, PathToken name, json_object* value, JsonRef& replaced);

// Deletes a member and releases its value. False when there is no such member.
bool deleteMember(json_object* container, PathToken name);

}  // namespace vobiutils
