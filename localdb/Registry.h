// What makes controllers (LocalDbControllers.cpp) asks of the registry. Each function is one step
// under the registry mutex.
#pragma once

#include "LocalDbCtrl.h"

namespace vobiutils {

enum class Added { YES, REGISTERED_ALREADY, NO_MEMORY };

// Registers a controller, which belongs to the registry from then on.
Added addController(char const* key, LOCALDB_HANDLER* controller);

// Begins no use, which would hold up a removal: the answer may be out of date when it is returned.
bool isRegistered(char const* key);

// Removes all entries, and registers the default controller.
//
// intended: leaks the controllers of the entries.
Added addDefaultController(LOCALDB_HANDLER* controller);

}  // namespace vobiutils
