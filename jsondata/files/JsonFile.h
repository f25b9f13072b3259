// Reads a JSON file as a whole.
//
// json-c's own file functions keep their last error message in a buffer that all threads share.
// This one does not, and may be called from any thread.
#pragma once

#include <json-c/json.h>

namespace vobiutils {

// A new value, released by the caller. Null for a null name, when the file does not exist, cannot
// be read or is not JSON, and when it holds null.
json_object* readJsonFile(char const* name);

}  // namespace vobiutils
