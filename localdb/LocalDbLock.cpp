// The plain operations of LocalDbCtrl on a database: lock, save and unlock.
//
// Ordinarily a lock returns a handle in state 2, and one save or unlock ends it. A lock that finds
// no document or no node returns null and, oddly, leaves the mutex held: the caller ends it with an
// unlock, which frees the mutex in every state. The whole table:
//
//   call    state  condition                state after  mutex      result
//   lock    2      -                        2            untouched  null
//   lock    0, 1   document and node there  2            held       handle
//   lock    0      file missing             0            held       null
//   lock    0, 1   no such node             1            held       null
//   lock    1      no document              1            held       null
//   save    2      document there           0            released   of the write; document dropped
//   unlock  2      document there           1            released   0
//   either  2      no document              0            released   2
//   either  0, 1   -                        unchanged    released   2
#include <assert.h>

#include <optional>

#include "LocalDbCtrl.h"
#include "TreeMapObject.h"
#include "localdb/ControllerUse.h"
#include "localdb/DatabaseLock.h"
#include "logging/Log.h"

using namespace vobiutils;

namespace {

int const SUCCESS = 0;
int const FAILURE = 2;

// Returns the document, loaded first if necessary, or a handle on the node at `path`. Null if there
// is none, and also when out of memory.
TreeMapObject* documentOrNode(Database& database, char const* path) {
    if (database.state() == DB_STATE_UNINITIALIZED) {
        uint64_t version = 0;
        if (!database.load("lockDbObject", 1, version)) {  // intended: logs 1 for every API type
            return nullptr;
        }
        database.setState(database.idleState());
    }
    if (database.document() == nullptr) {
        UTIL_ERROR("%s: There is something wrong! localdb %d is null in accessable state %d\n",
                   "lockDbObject", static_cast<int>(database.apiType), database.state());
        return nullptr;
    }
    TreeMapObject* node = database.document();
    return *path == '\0' || database.tryGet(path, node) ? node : nullptr;
}

TreeMapObject* refuseLock(unsigned int apiType, char const* path) {
    UTIL_ERROR("%s: wrong params apiT=%d path=%p\n", "lockDbObject", static_cast<int>(apiType),
               static_cast<void const*>(path));
    return nullptr;
}

int refuseRelease(char const* function, unsigned int apiType) {
    UTIL_ERROR("%s: wrong params apiT=%d\n", function, static_cast<int>(apiType));
    return FAILURE;
}

// Logs the state, frees the mutex, and returns the state from before: once the mutex is free,
// another writer may change it.
int logAndRelease(Database& database, char const* function) {
    int const state = database.state();
    UTIL_DEBUG("%s: apiT=%d state=%d\n", function, static_cast<int>(database.apiType), state);
    release(database);
    return state;
}

}  // namespace

TreeMapObject* LocalDbCtrl::lockDbObject(unsigned int apiType, char const* path,
                                         char const* sessionKey) {
    if (path == nullptr) {
        return refuseLock(apiType, path);
    }
    ControllerUse use;
    std::optional<Database> database = use.findDatabase(apiType, sessionKey);
    if (!database) {
        return refuseLock(apiType, path);
    }
    int const state = database->state();
    UTIL_DEBUG("%s: start state=%d\n", "lockDbObject", state);
    if (state == DB_STATE_WRITING) {
        UTIL_WARN("%s: failed to access local database (%d) in writing state\n", "lockDbObject",
                  static_cast<int>(apiType));
        return nullptr;
    }
    acquire(*database);
    TreeMapObject* const object = documentOrNode(*database, path);
    if (object != nullptr) {
        assert(database->document() != nullptr && database->state() == DB_STATE_ACCESSIBLE);
        database->forgetOrigin();
        database->setState(DB_STATE_WRITING);
    }
    return object;
}

int LocalDbCtrl::saveDbObject(API_TYPE_T apiType, char const* sessionKey) {
    ControllerUse use;
    std::optional<Database> database = use.findDatabase(apiType, sessionKey);
    if (!database) {
        return refuseRelease("saveDbObject", apiType);
    }
    if (logAndRelease(*database, "saveDbObject") != DB_STATE_WRITING) {
        UTIL_DEBUG("%s: I am not in locked state\n", "saveDbObject");
        return FAILURE;
    }
    int result = FAILURE;
    if (database->document() != nullptr) {
        uint64_t version = 0;
        result = database->save(version);
        assert(database->document() == nullptr);  // the state will be 0
    } else {
        UTIL_DEBUG("%s: there is something wrong, I am is not initialized already!\n",
                   "saveDbObject");
    }
    endWriting(*database);
    return result;
}

int LocalDbCtrl::unlockDbObject(unsigned int apiType, char const* sessionKey) {
    ControllerUse use;
    std::optional<Database> database = use.findDatabase(apiType, sessionKey);
    if (!database) {
        return refuseRelease("unlockDbObject", apiType);
    }
    if (logAndRelease(*database, "unlockDbObject") != DB_STATE_WRITING) {
        UTIL_WARN("%s: I am not in locked state\n", "unlockDbObject");
        return FAILURE;
    }
    database->forgetOrigin();  // known still if the program has set the state itself
    int result = SUCCESS;
    if (database->document() == nullptr) {
        UTIL_ERROR("%s: there is something wrong, I am is not initialized already!\n",
                   "unlockDbObject");
        result = FAILURE;
    }
    endWriting(*database);
    return result;
}
