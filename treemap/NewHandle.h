// Making the handles that a caller gets.
#pragma once

#include <json-c/json.h>

#include "TreeMapObject.h"

namespace vobiutils {

// A new handle that takes over the caller's reference on `node`, which may be null. Null when there
// is no memory for the handle; the reference is released then, too.
TreeMapObject* tryOwningHandle(json_object* node);

// The same, but throws std::bad_alloc when there is no memory.
TreeMapObject* newOwningHandle(json_object* node);

// Sets `node` to a new handle on the node at a path below `root`, as TreeMapObject::get returns it,
// or to null if there is no such node. False, with `node` unchanged, when out of memory.
bool tryGet(json_object* root, char const* path, TreeMapObject*& node);

}  // namespace vobiutils
