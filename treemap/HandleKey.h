// The key of a handle, key_obj: its name in its parent. A name of 32 characters fills key_obj and
// is not terminated there.
#pragma once

#include <string_view>

#include "TreeMapObject.h"

namespace vobiutils {

// A NUL-terminated key.
struct Key {
    char text[sizeof TreeMapObject::key_obj + 1];
};

Key keyOf(TreeMapObject const& handle);

// "[n]": the key of an array element, and the path to it from the array.
Key indexKey(unsigned int index);

// A name that is too long is cut; the rest of a shorter one's space is zeroed.
void setKey(TreeMapObject& handle, std::string_view name);

// Sets the key to "[n]".
void setIndexKey(TreeMapObject& handle, unsigned int index);

}  // namespace vobiutils
