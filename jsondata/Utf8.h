// Checks UTF-8, character by character.
#pragma once

#include <stddef.h>

namespace vobiutils {

// The bytes of the character at `text`, which ends at `end` and is not empty. 0 when there is no
// valid one: for a byte that cannot be there, a longer form than needed, a surrogate, and a code
// past the last one.
size_t characterLength(char const* text, char const* end);

}  // namespace vobiutils
