// JSON files, read whole.
//
// json-c's own file functions leave the text of an error in a buffer that all threads share; these
// do not, and may be called from any number of threads.
#ifndef VOBIUTILS_JSONDATA_FILES_JSONFILE_H
#define VOBIUTILS_JSONDATA_FILES_JSONFILE_H

#include <json-c/json.h>

namespace vobiutils {

// A new value, the caller's to release; null when the file (or its name) is missing, cannot be read
// or holds no JSON, and when it holds null.
json_object* readJsonFile(char const* name);

}  // namespace vobiutils

#endif
