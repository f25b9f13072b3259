#include "TypeLock.h"

#include <errno.h>

#include <new>

#include "FileName.h"
#include "JsonData.h"
#include "Log.h"
#include "MutexGuard.h"
#include "TreeMapObject.h"

namespace {

// Guards the moments in which a type changes hands; one lock and one condition serve all types.
pthread_mutex_t handOver = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t writingEnded = PTHREAD_COND_INITIALIZER;

// False when the deadline, if there is one, has passed.
bool waitWhileWriting(DbSlot const& slot, timespec const* deadline) {
    MutexGuard const guard(handOver);
    while (slot.state() == DB_STATE_WRITING) {
        int const error = deadline != nullptr
                              ? pthread_cond_timedwait(&writingEnded, &handOver, deadline)
                              : pthread_cond_wait(&writingEnded, &handOver);
        if (error == ETIMEDOUT) {
            return false;
        }
    }
    return true;  // the state may have changed again: whoever asks has to lock first
}

bool lockMutex(DbSlot& slot, timespec const* deadline) {
    return (deadline != nullptr ? pthread_mutex_timedlock(&slot.mutex, deadline)
                                : pthread_mutex_lock(&slot.mutex)) == 0;
}

bool acquire(DbSlot& slot, timespec const* deadline) {
    while (lockMutex(slot, deadline)) {
        if (slot.state() != DB_STATE_WRITING) {
            return true;
        }
        releaseMutex(slot);
        if (!waitWhileWriting(slot, deadline)) {
            return false;
        }
    }
    return false;
}

}  // namespace

std::optional<DbSlot> findSlot(unsigned int apiType, char const* sessionKey) {
    LOCALDB_HANDLER* controller = nullptr;
    try {
        controller = apiType < API_TYPE_COUNT ? LocalDbCtrl::getDBByKey(sessionKey) : nullptr;
    } catch (std::bad_alloc const&) {  // there was no default controller, and no room for its entry
    }
    return controller != nullptr ? std::optional<DbSlot>(std::in_place, *controller, apiType)
                                 : std::nullopt;
}

void acquire(DbSlot& slot) { acquire(slot, nullptr); }

bool acquireBefore(DbSlot& slot, timespec const& deadline) { return acquire(slot, &deadline); }

void releaseMutex(DbSlot& slot) {
    MutexGuard const guard(handOver);
    pthread_mutex_trylock(&slot.mutex);
    pthread_mutex_unlock(&slot.mutex);
}

void endWriting(DbSlot& slot, int state) {
    MutexGuard const guard(handOver);
    slot.setState(state);
    pthread_cond_broadcast(&writingEnded);
}

int saveAndDrop(DbSlot& slot) {
    FileName const file = FileName::ofData(slot.apiType);
    UTIL_DEBUG("%s: type=%d save object %p to file %s\n", "saveDbObject",
               static_cast<int>(slot.apiType), static_cast<void*>(slot.object),
               logging::printable(file.get()));
    int const result = JsonData::saveObjectToFile(file.get(), slot.object);
    delete slot.object;  // also after a failed write: the next lock reads the file again
    slot.object = nullptr;
    return result;
}
