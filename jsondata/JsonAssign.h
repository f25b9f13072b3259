// Assignment by path, for the library's own callers.
#ifndef VOBIUTILS_JSONDATA_JSONASSIGN_H
#define VOBIUTILS_JSONDATA_JSONASSIGN_H

#include <json-c/json.h>

namespace vobiutils {

// What JsonData::setJObj does, with a value that the caller gives away: its reference becomes the
// document's, or is released when it is not stored. True when it is.
bool assign(json_object* root, char const* path, json_object* value);

}  // namespace vobiutils

#endif
