// The handles that a search has found.
#pragma once

#include <json-c/json.h>

#include <list>

#include "TreeMapObject.h"

namespace vobiutils {

typedef std::list<TreeMapObject*> Hits;

// Appends a new handle with a reference of its own on `node`. False, with nothing appended, when
// out of memory.
bool append(Hits& hits, json_object* node);

}  // namespace vobiutils
