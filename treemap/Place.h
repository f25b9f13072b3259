// Where a path that comes from outside leads, without a log line.
#pragma once

#include <json-c/json.h>

#include "TreeMapObject.h"
#include "jsondata/JsonPath.h"

namespace vobiutils {

struct Place {
    TreeMapObject::Presence presence = TreeMapObject::IMPOSSIBLE;
    json_object* value = nullptr;   // if present, borrowed; null for JSON null
    json_object* parent = nullptr;  // its container, borrowed; null for the root
    PathToken last;                 // its name there, a slice of the caller's path;
    size_t index = 0;               // or its index
};

Place findPlace(json_object* root, char const* path);

}  // namespace vobiutils
