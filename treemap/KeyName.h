// The name of a handle in its parent, key_obj: at most 32 characters, terminated only when shorter.
#ifndef VOBIUTILS_TREEMAP_KEYNAME_H
#define VOBIUTILS_TREEMAP_KEYNAME_H

#include <stddef.h>

#include <string_view>

#include "TreeMapObject.h"

namespace vobiutils {

// A name that is too long is cut; what it leaves free is zeroed.
void setKeyName(TreeMapObject& handle, std::string_view name);

// "[n]", the name of an array element and the path to it from the array.
struct ElementName {
    explicit ElementName(unsigned int index);
    char text[16];
};
void setElementName(TreeMapObject& handle, unsigned int index);

// The name in a handle, terminated.
struct KeyName {
    explicit KeyName(TreeMapObject const& handle);
    char text[sizeof TreeMapObject::key_obj + 1];
};

}  // namespace vobiutils

#endif
