// The name of a handle in its parent, key_obj: at most 32 characters, terminated only when shorter.
#ifndef VOBIUTILS_TREEMAP_KEYNAME_H
#define VOBIUTILS_TREEMAP_KEYNAME_H

#include <stddef.h>

#include <string_view>

#include "TreeMapObject.h"

// A name that is too long is cut; what it leaves free is zeroed.
void setKeyName(TreeMapObject& handle, std::string_view name);

// "[n]", the name of an array element.
void setElementName(TreeMapObject& handle, size_t index);

std::string_view keyName(TreeMapObject const& handle);

#endif
