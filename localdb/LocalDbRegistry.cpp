// The registry of controllers by session key.
//
// The guard is held for a step on the map only: never while a line is logged, a file is read or a
// controller is made or destroyed.
#include <memory>

#include "DbSlot.h"
#include "LocalDbCtrl.h"
#include "Log.h"
#include "MutexGuard.h"

std::map<std::string, LOCALDB_HANDLER*> LocalDbCtrl::controllers;

namespace {

typedef std::map<std::string, LOCALDB_HANDLER*> Registry;

char const DEFAULT_KEY[] = "default";

pthread_mutex_t registryLock = PTHREAD_MUTEX_INITIALIZER;

// What follows is called with the guard held, or holds it itself where it says so.

// The entry of a key, or the end. Makes no std::string of the key: a writer must be able to end its
// lock when memory is short.
Registry::iterator find(char const* key) {
    Registry& controllers = LocalDbCtrl::controllers;
    Registry::iterator entry = controllers.begin();
    while (entry != controllers.end() && entry->first != key) {
        ++entry;
    }
    return entry;
}

bool isThere(Registry::iterator entry) { return entry != LocalDbCtrl::controllers.end(); }

// The controller of a key, null in an entry that has to be made for it.
LOCALDB_HANDLER*& controllerOf(char const* key) {
    Registry::iterator entry = find(key);
    if (!isThere(entry)) {
        entry = LocalDbCtrl::controllers.emplace(key, nullptr).first;
    }
    return entry->second;
}

// Guarded. False when the key is registered already.
bool add(char const* key, LOCALDB_HANDLER* controller) {
    MutexGuard const guard(registryLock);
    if (isThere(find(key))) {
        return false;
    }
    controllerOf(key) = controller;
    return true;
}

// Guarded. Takes the entry out. False when there is none; `controller` may be null when there is.
bool takeOut(char const* key, LOCALDB_HANDLER*& controller) {
    MutexGuard const guard(registryLock);
    Registry::iterator const entry = find(key);
    if (!isThere(entry)) {
        return false;
    }
    controller = entry->second;
    LocalDbCtrl::controllers.erase(entry);
    return true;
}

// Guarded. False when the key is not registered.
bool look(char const* key, LOCALDB_HANDLER*& controller) {
    MutexGuard const guard(registryLock);
    Registry::iterator const entry = find(key);
    if (!isThere(entry)) {
        return false;
    }
    controller = entry->second;
    return true;
}

// Guarded. intended: registers "default" with a null controller when it is absent.
LOCALDB_HANDLER* defaultController() {
    MutexGuard const guard(registryLock);
    return controllerOf(DEFAULT_KEY);
}

int refuseRegistered(char const* key) {
    UTIL_DEBUG("%s: session DB is already for key %s, something weird\n", "cloneNewDB", key);
    return 0;
}

}  // namespace

void LocalDbCtrl::init() {
    {
        MutexGuard const guard(registryLock);
        controllers.clear();  // intended leak: the controllers of the entries
    }
    std::unique_ptr<LOCALDB_HANDLER> controller(new LOCALDB_HANDLER);
    MutexGuard const guard(registryLock);
    controllerOf(DEFAULT_KEY) = controller.get();
    controller.release();
}

int LocalDbCtrl::cloneNewDB(char const* sessionKey) {
    if (sessionKey == nullptr) {
        UTIL_WARN("%s: sessionKey is NULL, nothing to be created\n", "cloneNewDB");
        return 0;
    }
    LOCALDB_HANDLER* controllerThere = nullptr;
    if (look(sessionKey, controllerThere)) {
        return refuseRegistered(sessionKey);
    }
    std::unique_ptr<LOCALDB_HANDLER> controller(new LOCALDB_HANDLER);
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        DbSlot(*controller, type).load("cloneNewDB", static_cast<int>(type));
    }
    UTIL_DEBUG("%s: new handler created for session %s\n", "cloneNewDB", sessionKey);
    if (!add(sessionKey, controller.get())) {  // another thread was faster
        controller.reset();
        return refuseRegistered(sessionKey);
    }
    controller.release();
    return 1;
}

LOCALDB_HANDLER* LocalDbCtrl::getDBByKey(char const* sessionKey) {
    if (sessionKey == nullptr) {
        UTIL_ERROR("%s: sessionKey is NULL, return the default controller\n", "getDBByKey");
        return defaultController();
    }
    LOCALDB_HANDLER* controller = nullptr;
    if (!look(sessionKey, controller)) {
        UTIL_ERROR("%s: Cannot found key %s, return the default controller\n", "getDBByKey",
                   sessionKey);
        return defaultController();
    }
    return controller;
}

int LocalDbCtrl::removeDB(char const* sessionKey) {
    if (sessionKey == nullptr) {
        UTIL_WARN("%s: sessionKey is NULL, nothing to be removed\n", "removeDB");
        return 1;
    }
    LOCALDB_HANDLER* controller = nullptr;
    if (!takeOut(sessionKey, controller)) {
        UTIL_ERROR("%s: Cannot found key %s\n", "removeDB", sessionKey);
        return 1;
    }
    delete controller;
    return 1;
}
