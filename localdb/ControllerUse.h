// A call at work on a controller. From the lookup to the end of the scope, removeDB does not destroy it.
#ifndef VOBIUTILS_LOCALDB_CONTROLLERUSE_H
#define VOBIUTILS_LOCALDB_CONTROLLERUSE_H

#include <optional>

#include "localdb/Database.h"

namespace vobiutils {

class ControllerUse {
  public:
    ControllerUse() = default;
    // Uses a controller that the caller keeps from being removed: it holds one of its mutexes.
    explicit ControllerUse(LOCALDB_HANDLER& held);
    ~ControllerUse();
    ControllerUse(ControllerUse const&) = delete;
    ControllerUse& operator=(ControllerUse const&) = delete;

    // Finds the controller of a key as LocalDbCtrl::getDBByKey does, and uses it from then on. Called once.
    // Null as there. May throw std::bad_alloc, as there.
    LOCALDB_HANDLER* find(char const* sessionKey);

    // The same for one API type of it. Nothing for a bad type, for a key without a controller, and when
    // memory ran out.
    std::optional<Database> findDatabase(unsigned int apiType, char const* sessionKey);

    ControllerUse* next = nullptr;          // in the registry's chain
    LOCALDB_HANDLER* controller = nullptr;  // guarded by the registry
    bool isRemoval = false;                 // removeDB itself, which waits for the others
};

}  // namespace vobiutils

#endif
