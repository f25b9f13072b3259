// Saving a document and learning which content its file then has.
#pragma once

#include <stdint.h>

class TreeMapObject;

namespace vobiutils {

// Does the same as JsonData::saveObjectToFile. On success, `version` is set to that of the bytes
// that the file then holds (FileBytes.h), unless it is null.
int saveDocument(char const* file, TreeMapObject const* document, uint64_t* version);

}  // namespace vobiutils
