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
#include <assert.h>

#include "localdb/Chain.h"
#include "localdb/Condition.h"
#include "localdb/ControllerTable.h"
#include "localdb/ControllerUse.h"
#include "localdb/DatabaseLock.h"
#include "localdb/Registry.h"
#include "logging/Log.h"
#include "logging/MutexGuard.h"

using namespace vobiutils;

namespace {

char const DEFAULT_KEY[] = "default";

pthread_mutex_t registryLock = PTHREAD_MUTEX_INITIALIZER;
Condition useEnded;
Chain<ControllerUse> uses;

// The caller holds the registry mutex, except where a function says that it locks it.

Added add(char const* key, LOCALDB_HANDLER* controller) {
    ControllerEntry const entry = addEntry(key);
    if (!isFound(entry)) {
        return Added::NO_MEMORY;
    }
    entry->second = controller;
    return Added::YES;
}

void begin(ControllerUse& use, LOCALDB_HANDLER* controller) {
    assert(use.controller == nullptr);  // once at most
    use.controller = controller;
    if (controller != nullptr) {
        uses.append(&use);
    }
}

// Locks the registry mutex. Begins the use of a key's controller, which may be null. False if the
// key is not registered.
bool lookUp(char const* key, ControllerUse& use) {
    MutexGuard const guard(registryLock);
    ControllerEntry const entry = findEntry(key);
    if (!isFound(entry)) {
        return false;
    }
    begin(use, entry->second);
    return true;
}

// Locks the registry mutex. Begins the use of the default controller, which may be null.
//
// intended: registers "default" with a null controller if it is missing. False when out of memory.
bool useDefault(ControllerUse& use) {
    MutexGuard const guard(registryLock);
    ControllerEntry const entry = addEntry(DEFAULT_KEY);
    if (!isFound(entry)) {
        return false;
    }
    begin(use, entry->second);
    return true;
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
    ControllerEntry entry = findEntry(key);
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
            removeEntry(entry);
            endRemovals(controller);
            assert(removal.controller == nullptr);
            return true;
        }
        useEnded.wait(registryLock);  // the mutex is free meanwhile, and the entry may go
        entry = findEntry(key);
    }
    return false;
}

}  // namespace

Added vobiutils::addController(char const* key, LOCALDB_HANDLER* controller) {
    MutexGuard const guard(registryLock);
    return isFound(findEntry(key)) ? Added::REGISTERED_ALREADY : add(key, controller);
}

Added vobiutils::addDefaultController(LOCALDB_HANDLER* controller) {
    MutexGuard const guard(registryLock);
    while (!LocalDbCtrl::controllers.empty()) {
        removeEntry(LocalDbCtrl::controllers.begin());
    }
    return add(DEFAULT_KEY, controller);
}

bool vobiutils::isRegistered(char const* key) {
    MutexGuard const guard(registryLock);
    return isFound(findEntry(key));
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

bool ControllerUse::find(char const* sessionKey) {
    if (sessionKey == nullptr) {
        UTIL_ERROR("%s: sessionKey is NULL, return the default controller\n", "getDBByKey");
        return useDefault(*this);
    }
    if (!lookUp(sessionKey, *this)) {
        UTIL_ERROR("%s: Cannot found key %s, return the default controller\n", "getDBByKey",
                   sessionKey);
        return useDefault(*this);
    }
    return true;
}

std::optional<Database> ControllerUse::findDatabase(unsigned int apiType, char const* sessionKey) {
    if (apiType >= API_TYPE_COUNT || !find(sessionKey) || controller == nullptr) {
        return std::nullopt;
    }
    return std::optional<Database>(std::in_place, *controller, apiType, findOrigins(*controller));
}
