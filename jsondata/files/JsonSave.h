// Saving JSON to a file.
#ifndef VOBIUTILS_JSONDATA_FILES_JSONSAVE_H
#define VOBIUTILS_JSONDATA_FILES_JSONSAVE_H

#include <json-c/json.h>

#include "jsondata/files/FileReplacement.h"

namespace vobiutils {

// Makes the file hold `value`, pretty, by replacing it as a whole. 0; -1 when that fails, for a
// null name or value, and for a value that is nested deeper than readJsonFile reads.
int saveJsonFile(char const* name, json_object* value, Durability durability);

}  // namespace vobiutils

#endif
