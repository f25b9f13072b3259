#include "TypeLock.h"

#include <errno.h>

#include <new>

#include "FileName.h"
#include "JsonData.h"
#include "Log.h"
#include "MutexGuard.h"
#include "TreeMapObject.h"

namespace {

// A condition whose waits end by the clock that nobody sets.
class Condition {
  public:
    Condition() {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&condition_, &attributes);
        pthread_condattr_destroy(&attributes);
    }

    void notify() { pthread_cond_broadcast(&condition_); }

    // False when the deadline, if there is one, has passed.
    bool wait(pthread_mutex_t& mutex, timespec const* deadline) {
        return deadline == nullptr
                   ? pthread_cond_wait(&condition_, &mutex) == 0
                   : pthread_cond_timedwait(&condition_, &mutex, deadline) != ETIMEDOUT;
    }

  private:
    pthread_cond_t condition_;
};

// Guards the moments in which a type changes hands; one lock and one condition serve all types.
pthread_mutex_t handOver = PTHREAD_MUTEX_INITIALIZER;
Condition released;  // a mutex, or a state of "writing"

void waitWhileWriting(DbSlot const& slot) {
    MutexGuard const guard(handOver);
    while (slot.state() == DB_STATE_WRITING) {
        released.wait(handOver, nullptr);
    }
}

// With the guard held, under which a mutex is released.
bool tryAcquire(DbSlot& slot) {
    if (pthread_mutex_trylock(&slot.mutex) != 0) {
        return false;
    }
    bool const isFree = slot.state() != DB_STATE_WRITING;
    if (!isFree) {
        pthread_mutex_unlock(&slot.mutex);
    }
    return isFree;
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

void acquire(DbSlot& slot) {
    pthread_mutex_lock(&slot.mutex);
    while (slot.state() == DB_STATE_WRITING) {
        releaseMutex(slot);
        waitWhileWriting(slot);
        pthread_mutex_lock(&slot.mutex);
    }
}

bool acquireBefore(DbSlot& slot, timespec const& deadline) {
    MutexGuard const guard(handOver);
    bool inTime = true;
    while (!tryAcquire(slot)) {
        if (!inTime) {
            return false;
        }
        inTime = released.wait(handOver, &deadline);
    }
    return true;
}

void releaseMutex(DbSlot& slot) {
    MutexGuard const guard(handOver);
    pthread_mutex_trylock(&slot.mutex);
    pthread_mutex_unlock(&slot.mutex);
    released.notify();
}

void endWriting(DbSlot& slot, int state) {
    MutexGuard const guard(handOver);
    slot.setState(state);
    released.notify();
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
