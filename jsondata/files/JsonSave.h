// Saves a JSON value to a file.
#pragma once

#include <json-c/json.h>
#include <stdint.h>

#include "jsondata/files/FileReplacement.h"

namespace vobiutils {

// The text that saveJsonFile() writes, which belongs to the value until that is changed or printed
// again. Null for a value that is nested deeper than readJsonFile reads, and when out of memory.
char const* savedText(json_object* value, size_t& length);

// Replaces the file by one that holds `value`, pretty-printed (see replaceFile). 0 on success; -1
// when that fails, for a null name or value, and for a value that is nested deeper than
// readJsonFile reads. On success, `version` is set to that of the bytes that the file then holds,
// unless it is null.
int saveJsonFile(char const* name, json_object* value, Durability durability,
                 uint64_t* version = nullptr);

}  // namespace vobiutils
