// The registry of controllers by session key, and the calls at work on them.
//
// The guard is held for a step on the map or on the chain of uses: never while a line is logged, a file is
// read or a controller is made or destroyed.
//
// A controller must not be destroyed while a call works on it. A call finds the entry and enters its use in
// one step under the guard, and a removal looks for uses and takes the entry out in one: either the removal
// sees the use, or the call no longer finds the controller. Each side stores one thing and loads the other;
// with atomics in place of the guard, each could miss what the other has just stored.
#include <memory>
#include <new>

#include "localdb/Chain.h"
#include "localdb/Condition.h"
#include "localdb/ControllerUse.h"
#include "localdb/DatabaseLock.h"
#include "logging/Log.h"
#include "logging/MutexGuard.h"

using namespace vobiutils;

std::map<std::string, LOCALDB_HANDLER*> LocalDbCtrl::controllers;

namespace {

typedef std::map<std::string, LOCALDB_HANDLER*> Registry;

char const DEFAULT_KEY[] = "default";

pthread_mutex_t registryLock = PTHREAD_MUTEX_INITIALIZER;
Condition useEnded;
Chain<ControllerUse> uses;

// The caller holds the guard, except for functions marked "Guarded", which take it themselves.

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

void begin(ControllerUse& use, LOCALDB_HANDLER* controller) {
    use.controller = controller;
    if (controller != nullptr) {
        uses.append(&use);
    }
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

// Guarded. Begins the use of a key's controller, which may be null. False when the key is not registered.
bool look(char const* key, ControllerUse& use) {
    MutexGuard const guard(registryLock);
    Registry::iterator const entry = find(key);
    if (!isThere(entry)) {
        return false;
    }
    begin(use, entry->second);
    return true;
}

// Guarded. intended: registers "default" with a null controller when it is absent.
LOCALDB_HANDLER* useDefault(ControllerUse& use) {
    MutexGuard const guard(registryLock);
    begin(use, controllerOf(DEFAULT_KEY));
    return use.controller;
}

int refuseRegistered(char const* key) {
    UTIL_DEBUG("%s: session DB is already for key %s, something weird\n", "cloneNewDB", key);
    return 0;
}

bool isUsed(LOCALDB_HANDLER const* controller) {
    for (ControllerUse const* use = uses.first; use != nullptr; use = use->next) {
        if (use->controller == controller && !use->isRemoval) {
            return true;
        }
    }
    return false;
}

// Tells the other removals of the controller that it is gone: the next one may get the same address.
void endRemovals(LOCALDB_HANDLER const* controller) {
    for (ControllerUse* use = uses.first; use != nullptr; use = use->next) {
        if (use->controller == controller) {
            uses.remove(use);
            use->controller = nullptr;
        }
    }
}

bool isIdle(LOCALDB_HANDLER* controller) {
    return controller == nullptr || (!isUsed(controller) && isUnlocked(*controller));
}

// Guarded. Takes the entry of a key out of the map as soon as its controller, which may be null, is idle: no
// call works on it, and no thread holds a lock of it. False when there is no entry, or no longer this one.
bool takeOutWhenIdle(char const* key, LOCALDB_HANDLER*& controller) {
    ControllerUse removal;
    removal.isRemoval = true;
    MutexGuard const guard(registryLock);
    Registry::iterator entry = find(key);
    if (!isThere(entry)) {
        return false;
    }
    controller = entry->second;
    begin(removal, controller);
    while (isThere(entry) && entry->second == controller && removal.controller == controller) {
        if (isIdle(controller)) {
            LocalDbCtrl::controllers.erase(entry);
            endRemovals(controller);
            return true;
        }
        useEnded.wait(registryLock);  // without the guard: the entry may go
        entry = find(key);
    }
    return false;
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
    if (ControllerUse registered; look(sessionKey, registered)) {
        return refuseRegistered(sessionKey);
    }
    std::unique_ptr<LOCALDB_HANDLER> controller(new LOCALDB_HANDLER);
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        Database database(*controller, type);
        database.load("cloneNewDB", static_cast<int>(type));
        database.setState(database.idleState());
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
    return ControllerUse().find(sessionKey);
}

int LocalDbCtrl::removeDB(char const* sessionKey) {
    if (sessionKey == nullptr) {
        UTIL_WARN("%s: sessionKey is NULL, nothing to be removed\n", "removeDB");
        return 1;
    }
    LOCALDB_HANDLER* controller = nullptr;
    if (!takeOutWhenIdle(sessionKey, controller)) {
        UTIL_ERROR("%s: Cannot found key %s\n", "removeDB", sessionKey);
        return 1;
    }
    delete controller;
    return 1;
}

ControllerUse::ControllerUse(LOCALDB_HANDLER& held) {
    MutexGuard const guard(registryLock);
    begin(*this, &held);
}

ControllerUse::~ControllerUse() {
    MutexGuard const guard(registryLock);
    if (controller != nullptr) {
        uses.remove(this);
        useEnded.notify();
    }
}

LOCALDB_HANDLER* ControllerUse::find(char const* sessionKey) {
    if (sessionKey == nullptr) {
        UTIL_ERROR("%s: sessionKey is NULL, return the default controller\n", "getDBByKey");
        return useDefault(*this);
    }
    if (!look(sessionKey, *this)) {
        UTIL_ERROR("%s: Cannot found key %s, return the default controller\n", "getDBByKey",
                   sessionKey);
        return useDefault(*this);
    }
    return controller;
}

std::optional<Database> ControllerUse::findDatabase(unsigned int apiType, char const* sessionKey) {
    try {
        if (apiType < API_TYPE_COUNT && find(sessionKey) != nullptr) {
            return std::optional<Database>(std::in_place, *controller, apiType);
        }
    } catch (std::bad_alloc const&) {  // there was no default controller, and no room for its entry
    }
    return std::nullopt;
}
