// The entries of LocalDbCtrl::controllers, by key.
#pragma once

#include "LocalDbCtrl.h"

namespace vobiutils {

typedef decltype(LocalDbCtrl::controllers)::iterator ControllerEntry;

// The entry of a key, or the end. Takes no memory that it cannot do without.
ControllerEntry findEntry(char const* key);

// The entry of a key, which is added, with null, if it is missing; the end when out of memory.
ControllerEntry addEntry(char const* key);

void removeEntry(ControllerEntry entry);

inline bool isFound(ControllerEntry entry) { return entry != LocalDbCtrl::controllers.end(); }

}  // namespace vobiutils
