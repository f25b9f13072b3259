// Keeps a controller from being destroyed by removeDB, from its lookup to the end of a scope.
#pragma once

#include <optional>

#include "localdb/Database.h"

namespace vobiutils {

class ControllerUse {
  public:
    ControllerUse() = default;
    // For a controller whose pointer the caller has already. The caller holds one of its mutexes,
    // which keeps it from being removed until then.
    explicit ControllerUse(LOCALDB_HANDLER& held);
    ~ControllerUse();
    ControllerUse(ControllerUse const&) = delete;
    ControllerUse& operator=(ControllerUse const&) = delete;

    // Finds the controller of a key, as LocalDbCtrl::getDBByKey does. False when out of memory.
    // Called at most once.
    bool find(char const* sessionKey);

    // Finds the database of an API type in the controller of a key. Returns no value for a wrong
    // type, for a key without a controller, and when out of memory. Called at most once, too.
    std::optional<Database> findDatabase(unsigned int apiType, char const* sessionKey);

    ControllerUse* next = nullptr;          // in the registry's chain
    LOCALDB_HANDLER* controller = nullptr;  // guarded by the registry
    bool isRemoval = false;                 // of removeDB, which waits for the other uses
};

}  // namespace vobiutils
