// The registry of controllers by session key, and their removal.
//
// Ordinarily a call finds its controller in the map and works on it, and a removal takes the entry
// out of the map and deletes the controller.
//
// A removal may come while another thread works on the controller, or holds a lock of it between
// two calls. The removal then waits until the controller is idle, and the key stays registered. To
// take the key out first would not do: the save that the writer still has to call would not find
// its controller any more, and go to the default one.
//
// A call becomes visible to removals by its ControllerUse, which it enters in a chain:
//
//     call       [ find the entry, enter the use ]   work   [ take the use out, notify ]
//     removal    [ no use, no mutex held: take the entry out ]   delete
//
// Each bracket is one step under the registry mutex. So either the removal sees the use, or the
// call no longer finds the controller. Each side writes one thing and reads the other's: with
// atomics in place of the mutex, each could miss what the other has just written.
//
// The registry mutex is never held while a line is logged, a file is read, or a controller is made
// or destroyed.
#include <memory>
#include <new>

#include "localdb/Chain.h"
#include "localdb/Condition.h"
#include "localdb/ControllerUse.h"
#include "localdb/DatabaseLock.h"
#include "logging/Log.h"
#include "logging/MutexGuard.h"

using namespace vobiutils;

// Early for a static build; see BEConfig.cpp.
[[gnu::init_priority(101)]] std::map<std::string, LOCALDB_HANDLER*> LocalDbCtrl::controllers;

namespace {

typedef std::map<std::string, LOCALDB_HANDLER*> Registry;

char const DEFAULT_KEY[] = "default";

pthread_mutex_t registryLock = PTHREAD_MUTEX_INITIALIZER;
Condition useEnded;
Chain<ControllerUse> uses;

// The caller holds the registry mutex, except where a function says that it locks it.

// Returns the entry of a key, or the end. The map's own search needs a std::string, which takes
// memory if the key is long. Without that, the entries are searched one by one: a writer must be
// able to end its lock even when out of memory.
Registry::iterator find(char const* key) {
    Registry& controllers = LocalDbCtrl::controllers;
    try {
        return controllers.find(key);
    } catch (std::bad_alloc const&) {
    }
    Registry::iterator entry = controllers.begin();
    while (entry != controllers.end() && entry->first != key) {
        ++entry;
    }
    return entry;
}

bool isFound(Registry::iterator entry) { return entry != LocalDbCtrl::controllers.end(); }

// Returns the controller in the entry of a key, which is made, with null, if it is missing.
LOCALDB_HANDLER*& controllerOf(char const* key) {
    Registry::iterator entry = find(key);
    if (!isFound(entry)) {
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

// Locks the registry mutex. False if the key is registered already.
bool add(char const* key, LOCALDB_HANDLER* controller) {
    MutexGuard const guard(registryLock);
    if (isFound(find(key))) {
        return false;
    }
    controllerOf(key) = controller;
    return true;
}

// Locks the registry mutex. Begins no use, which would hold up a removal: the answer may be out of
// date when it is returned.
bool isRegistered(char const* key) {
    MutexGuard const guard(registryLock);
    return isFound(find(key));
}

// Locks the registry mutex. Begins the use of a key's controller, which may be null. False if the
// key is not registered.
bool lookUp(char const* key, ControllerUse& use) {
    MutexGuard const guard(registryLock);
    Registry::iterator const entry = find(key);
    if (!isFound(entry)) {
        return false;
    }
    begin(use, entry->second);
    return true;
}

// intended: registers "default" with a null controller if it is missing. Locks the registry mutex.
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

// Tells every removal of the controller that it is gone, by taking them all out of the chain.
void endRemovals(LOCALDB_HANDLER const* controller) {
    for (ControllerUse* use = uses.first; use != nullptr; use = use->next) {
        if (use->controller == controller) {
            uses.remove(use);
            use->controller = nullptr;
        }
    }
}

// Whether no call works on the controller and no thread holds a mutex of it.
bool isIdle(LOCALDB_HANDLER* controller) {
    return controller == nullptr || (!isUsed(controller) && isUnlocked(*controller));
}

// Locks the registry mutex. Removes the entry of a key as soon as its controller, which may be
// null, is idle. False if there is no entry, or another thread has removed or replaced it
// meanwhile.
bool removeWhenIdle(char const* key, LOCALDB_HANDLER*& controller) {
    ControllerUse removal;
    removal.isRemoval = true;
    MutexGuard const guard(registryLock);
    Registry::iterator entry = find(key);
    if (!isFound(entry)) {
        return false;
    }
    controller = entry->second;
    begin(removal, controller);
    // Ordinarily the first round finds the controller idle. After a wait, another removal may have
    // deleted it, and the key may have a new controller, which must stay. The address alone does
    // not tell the two apart, as the new one may have got the old one's: hence endRemovals.
    while (isFound(entry) && entry->second == controller && removal.controller == controller) {
        if (isIdle(controller)) {
            LocalDbCtrl::controllers.erase(entry);
            endRemovals(controller);
            return true;
        }
        useEnded.wait(registryLock);  // the mutex is free meanwhile, and the entry may go
        entry = find(key);
    }
    return false;
}

}  // namespace

void LocalDbCtrl::init() {
    {
        MutexGuard const guard(registryLock);
        controllers.clear();  // intended: leaks the controllers of the entries
    }
    std::unique_ptr<LOCALDB_HANDLER> controller(new LOCALDB_HANDLER);
    addOrigins(new Origins(*controller, true));
    MutexGuard const guard(registryLock);
    controllerOf(DEFAULT_KEY) = controller.get();
    controller.release();
}

int LocalDbCtrl::cloneNewDB(char const* sessionKey) {
    if (sessionKey == nullptr) {
        UTIL_WARN("%s: sessionKey is NULL, nothing to be created\n", "cloneNewDB");
        return 0;
    }
    if (isRegistered(sessionKey)) {
        return refuseRegistered(sessionKey);
    }
    std::unique_ptr<LOCALDB_HANDLER> controller(new LOCALDB_HANDLER);
    auto* const origins = new Origins(*controller, false);
    addOrigins(origins);
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        Database database(*controller, type, origins);
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
    if (!removeWhenIdle(sessionKey, controller)) {
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
    if (!lookUp(sessionKey, *this)) {
        UTIL_ERROR("%s: Cannot found key %s, return the default controller\n", "getDBByKey",
                   sessionKey);
        return useDefault(*this);
    }
    return controller;
}

std::optional<Database> ControllerUse::findDatabase(unsigned int apiType, char const* sessionKey) {
    try {
        if (apiType < API_TYPE_COUNT && find(sessionKey) != nullptr) {
            return std::optional<Database>(std::in_place, *controller, apiType,
                                           findOrigins(*controller));
        }
    } catch (std::bad_alloc const&) {  // no memory for the missing entry of "default"
    }
    return std::nullopt;
}
