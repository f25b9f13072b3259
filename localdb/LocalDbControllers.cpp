// Makes controllers, and looks them up.
#include <memory>
#include <new>

#include "jsondata/OutOfMemory.h"
#include "localdb/ControllerUse.h"
#include "localdb/Registry.h"
#include "logging/Log.h"

using namespace vobiutils;

namespace {

// A controller without documents; null when out of memory.
std::unique_ptr<LOCALDB_HANDLER> newController(bool followsFiles) {
    std::unique_ptr<LOCALDB_HANDLER> controller(new (std::nothrow) LOCALDB_HANDLER);
    auto* const origins =
        controller != nullptr ? new (std::nothrow) Origins(*controller, followsFiles) : nullptr;
    if (origins == nullptr) {
        return nullptr;
    }
    addOrigins(origins);
    return controller;
}

// Loads the documents of the data files. False when out of memory.
bool loadAll(LOCALDB_HANDLER& controller) {
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        Database database(controller, type, findOrigins(controller));
        uint64_t version = 0;
        if (!database.load("cloneNewDB", static_cast<int>(type), version)) {
            return false;
        }
        database.setState(database.idleState());
    }
    return true;
}

Added addSession(char const* key) {
    std::unique_ptr<LOCALDB_HANDLER> controller = newController(false);
    if (controller == nullptr || !loadAll(*controller)) {
        return Added::NO_MEMORY;
    }
    UTIL_DEBUG("%s: new handler created for session %s\n", "cloneNewDB", key);
    Added const added = addController(key, controller.get());
    if (added == Added::YES) {
        controller.release();
    }
    return added;
}

}  // namespace

void LocalDbCtrl::init() {
    std::unique_ptr<LOCALDB_HANDLER> controller = newController(true);
    if (controller == nullptr || addDefaultController(controller.get()) == Added::NO_MEMORY) {
        controller.reset();
        throwBadAlloc();
    }
    controller.release();
}

int LocalDbCtrl::cloneNewDB(char const* sessionKey) {
    if (sessionKey == nullptr) {
        UTIL_WARN("%s: sessionKey is NULL, nothing to be created\n", "cloneNewDB");
        return 0;
    }
    Added const added =
        isRegistered(sessionKey) ? Added::REGISTERED_ALREADY : addSession(sessionKey);
    if (added == Added::NO_MEMORY) {
        throwBadAlloc();
    }
    if (added == Added::REGISTERED_ALREADY) {
        UTIL_DEBUG("%s: session DB is already for key %s, something weird\n", "cloneNewDB",
                   sessionKey);
    }
    return added == Added::YES ? 1 : 0;
}

LOCALDB_HANDLER* LocalDbCtrl::getDBByKey(char const* sessionKey) {
    LOCALDB_HANDLER* controller = nullptr;
    bool isKnown = false;
    {
        ControllerUse use;
        isKnown = use.find(sessionKey);
        controller = use.controller;
    }
    if (!isKnown) {
        throwBadAlloc();
    }
    return controller;
}
