// Making a handle where no exception may leave: memory that runs out is a result.
#ifndef VOBIUTILS_TREEMAP_NEWHANDLES_H
#define VOBIUTILS_TREEMAP_NEWHANDLES_H

#include <json-c/json.h>

#include <list>

#include "TreeMapObject.h"

namespace vobiutils {

// Appends a new handle with a reference of its own on `node`. False, and nothing appended, when there
// is no memory.
bool appendHandle(std::list<TreeMapObject*>& list, json_object* node);

}  // namespace vobiutils

#endif
