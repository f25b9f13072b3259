// Assignment by path, for the library's own callers.
#pragma once

#include <json-c/json.h>

namespace vobiutils {

// As JsonData::setJObj, but takes over the caller's reference on `value`: it becomes the
// document's, or is released when the value is not stored. True when it is stored.
bool assign(json_object* root, char const* path, json_object* value);

}  // namespace vobiutils
