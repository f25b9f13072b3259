// Writes into a file in place, where it cannot be replaced.
#pragma once

#include <stddef.h>

namespace vobiutils {

// What a file is to hold.
struct Content {
    char const* bytes;
    size_t length;
    bool synced;  // from the moment of success on, the content survives a loss of power
};

// Makes the file `name`, which is made if it is missing, hold the content and nothing else. False
// if it does not; a full disk leaves a regular file as it was. A kill, a loss of power or a failed
// write may leave a part of the content.
bool writeInPlace(char const* name, Content const& content);

}  // namespace vobiutils
