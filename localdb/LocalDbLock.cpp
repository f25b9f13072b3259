// Lock, save and unlock of one API type in one controller.
//
//   call    state  condition                 state after  mutex     result
//   lock    2      -                         2            untouched null
//   lock    0, 1   document and node there   2            held      handle
//   lock    0      file missing              0            held      null
//   lock    0, 1   no such node              1            held      null
//   lock    1      no document               1            held      null
//   save    2      document there            0            released  of the write; document
//   destroyed unlock  2      document there            1            released  0 either  2      no
//   document               0            released  2 either  0, 1   - unchanged    released  2
//
// The mutex serialises writers and is held from one call to another: no scope guard fits. The state
// turns away at once whoever comes while a writer holds the type.
//
// A release frees the mutex first and changes the state last, when the document is saved and
// destroyed. In between the state still reads 2, and the releasing thread alone owns the document:
// a writer that gets the mutex in that time gives it back and waits for the state to change.
#include <new>

#include "DbSlot.h"
#include "FileName.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "Log.h"
#include "MutexGuard.h"
#include "TreeMapObject.h"

namespace {

int const SUCCESS = 0;
int const FAILURE = 2;

// The end of writing is announced to the writers that wait for it; one condition serves all types.
pthread_mutex_t endLock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t ended = PTHREAD_COND_INITIALIZER;

void endWriting(DbSlot& slot, int state) {
    MutexGuard const guard(endLock);
    slot.setState(state);
    pthread_cond_broadcast(&ended);
}

void waitWhileWriting(DbSlot const& slot) {
    MutexGuard const guard(endLock);
    while (slot.state() == DB_STATE_WRITING) {
        pthread_cond_wait(&ended, &endLock);
    }
}

// Returns holding the mutex of a type that nobody is writing, saving or destroying.
void acquire(DbSlot& slot) {
    pthread_mutex_lock(&slot.mutex);
    while (slot.state() == DB_STATE_WRITING) {
        pthread_mutex_unlock(&slot.mutex);
        waitWhileWriting(slot);
        pthread_mutex_lock(&slot.mutex);
    }
}

// The document, loaded if it has to be, or the node at `path` in it; null when there is none.
TreeMapObject* open(DbSlot& slot, char const* path) {
    if (slot.state() == DB_STATE_UNINITIALIZED) {
        slot.load("lockDbObject", 1);  // intended: the line says 1, whatever the type
    }
    if (slot.object == nullptr) {
        UTIL_ERROR("%s: There is something wrong! localdb %d is null in accessable state %d\n",
                   "lockDbObject", static_cast<int>(slot.apiType), slot.state());
        return nullptr;
    }
    return *path != '\0' ? slot.object->get(path) : slot.object;
}

// Without memory for a handle there is no handle: the caller gets null, as for a missing node.
TreeMapObject* tryOpen(DbSlot& slot, char const* path) {
    try {
        return open(slot, path);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

TreeMapObject* refuseLock(unsigned int apiType, char const* path) {
    UTIL_ERROR("%s: wrong params apiT=%d path=%p\n", "lockDbObject", static_cast<int>(apiType),
               static_cast<void const*>(path));
    return nullptr;
}

// A mutex that nobody holds must not be unlocked: take it first, if it is free.
void releaseMutex(DbSlot& slot) {
    pthread_mutex_trylock(&slot.mutex);
    pthread_mutex_unlock(&slot.mutex);
}

int save(DbSlot& slot) {
    FileName const file = FileName::ofData(slot.apiType);
    UTIL_DEBUG("%s: type=%d save object %p to file %s\n", "saveDbObject",
               static_cast<int>(slot.apiType), static_cast<void*>(slot.object),
               logging::printable(file.get()));
    int const result = JsonData::saveObjectToFile(file.get(), slot.object);
    delete slot.object;  // also after a failed write: the next lock reads the file again
    slot.object = nullptr;
    return result;
}

int refuseRelease(char const* function, unsigned int apiType) {
    UTIL_ERROR("%s: wrong params apiT=%d\n", function, static_cast<int>(apiType));
    return FAILURE;
}

}  // namespace

TreeMapObject* LocalDbCtrl::lockDbObject(unsigned int apiType, char const* path,
                                         char const* sessionKey) {
    if (apiType >= API_TYPE_COUNT || path == nullptr) {
        return refuseLock(apiType, path);
    }
    LOCALDB_HANDLER* const controller = getDBByKey(sessionKey);
    if (controller == nullptr) {
        return refuseLock(apiType, path);
    }
    DbSlot slot(*controller, apiType);
    int const state = slot.state();
    UTIL_DEBUG("%s: start state=%d\n", "lockDbObject", state);
    if (state == DB_STATE_WRITING) {
        UTIL_WARN("%s: failed to access local database (%d) in writing state\n", "lockDbObject",
                  static_cast<int>(apiType));
        return nullptr;
    }
    acquire(slot);
    TreeMapObject* const object = tryOpen(slot, path);
    if (object != nullptr) {
        slot.setState(DB_STATE_WRITING);
    }
    return object;
}

// Both releases decide by the state read before the mutex is free: another writer may change it
// right after.

int LocalDbCtrl::saveDbObject(API_TYPE_T apiType, char const* sessionKey) {
    LOCALDB_HANDLER* const controller = apiType < API_TYPE_COUNT ? getDBByKey(sessionKey) : nullptr;
    if (controller == nullptr) {
        return refuseRelease("saveDbObject", apiType);
    }
    DbSlot slot(*controller, apiType);
    int const state = slot.state();
    UTIL_DEBUG("%s: apiT=%d state=%d\n", "saveDbObject", static_cast<int>(apiType), state);
    releaseMutex(slot);
    if (state != DB_STATE_WRITING) {
        UTIL_DEBUG("%s: I am not in locked state\n", "saveDbObject");
        return FAILURE;
    }
    int result = FAILURE;
    if (slot.object == nullptr) {
        UTIL_DEBUG("%s: there is something wrong, I am is not initialized already!\n",
                   "saveDbObject");
    } else {
        result = save(slot);
    }
    endWriting(slot, DB_STATE_UNINITIALIZED);
    return result;
}

int LocalDbCtrl::unlockDbObject(unsigned int apiType, char const* sessionKey) {
    LOCALDB_HANDLER* const controller = apiType < API_TYPE_COUNT ? getDBByKey(sessionKey) : nullptr;
    if (controller == nullptr) {
        return refuseRelease("unlockDbObject", apiType);
    }
    DbSlot slot(*controller, apiType);
    int const state = slot.state();
    UTIL_DEBUG("%s: apiT=%d state=%d\n", "unlockDbObject", static_cast<int>(apiType), state);
    releaseMutex(slot);
    if (state != DB_STATE_WRITING) {
        UTIL_WARN("%s: I am not in locked state\n", "unlockDbObject");
        return FAILURE;
    }
    if (slot.object == nullptr) {
        UTIL_ERROR("%s: there is something wrong, I am is not initialized already!\n",
                   "unlockDbObject");
        endWriting(slot, DB_STATE_UNINITIALIZED);
        return FAILURE;
    }
    endWriting(slot, DB_STATE_ACCESSIBLE);
    return SUCCESS;
}
