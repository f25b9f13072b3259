// The handles that a search has found.
#ifndef VOBIUTILS_TREEMAP_HITS_H
#define VOBIUTILS_TREEMAP_HITS_H

#include <json-c/json.h>

#include <list>

#include "TreeMapObject.h"

namespace vobiutils {

typedef std::list<TreeMapObject*> Hits;

// Appends a new handle with a reference of its own on `node`. False, with nothing appended, when
// out of memory.
bool append(Hits& hits, json_object* node);

}  // namespace vobiutils

#endif
