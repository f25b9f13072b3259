#include "localdb/DatabaseLock.h"

#include "JsonData.h"
#include "TreeMapObject.h"
#include "localdb/Chain.h"
#include "localdb/Condition.h"
#include "localdb/FileName.h"
#include "logging/Log.h"
#include "logging/MutexGuard.h"

namespace vobiutils {

namespace {

// Guards the moments in which a type changes hands, for all types, and the two chains.
pthread_mutex_t handOver = PTHREAD_MUTEX_INITIALIZER;

// A thread that waits for a type.
struct Waiter {
    explicit Waiter(pthread_mutex_t const& wanted) : mutex(&wanted) {}
    ~Waiter() { released.destroy(); }

    pthread_mutex_t const* const mutex;
    Condition released;  // the mutex, or the state "writing"
    Waiter* next = nullptr;
};

Chain<Waiter> waiters;
Chain<Claim> claims;

// What follows is called with handOver held.

Waiter* firstWaiter(pthread_mutex_t const& mutex) {
    Waiter* waiter = waiters.first;
    while (waiter != nullptr && waiter->mutex != &mutex) {
        waiter = waiter->next;
    }
    return waiter;
}

void wakeFirstWaiter(pthread_mutex_t const& mutex) {
    if (Waiter* const waiter = firstWaiter(mutex)) {
        waiter->released.notify();
    }
}

bool tryAcquire(Database& database) {
    if (pthread_mutex_trylock(&database.mutex) != 0) {
        return false;
    }
    bool const isFree = database.state() != DB_STATE_WRITING;
    if (!isFree) {
        pthread_mutex_unlock(&database.mutex);
    }
    return isFree;
}

bool waitFor(Database& database, timespec const* deadline) {
    Waiter self(database.mutex);
    waiters.append(&self);
    bool inTime = true;
    bool acquired = false;
    while (!acquired && inTime) {
        inTime = self.released.wait(handOver, deadline);
        acquired = firstWaiter(database.mutex) == &self && tryAcquire(database);
    }
    waiters.remove(&self);
    if (!acquired) {
        wakeFirstWaiter(database.mutex);  // it may have waited behind this one alone
    }
    return acquired;
}

void unlock(Database& database) {
    pthread_mutex_trylock(&database.mutex);
    pthread_mutex_unlock(&database.mutex);
    wakeFirstWaiter(database.mutex);
}

}  // namespace

bool acquire(Database& database, timespec const* deadline) {
    MutexGuard const guard(handOver);
    return (firstWaiter(database.mutex) == nullptr && tryAcquire(database)) ||
           waitFor(database, deadline);
}

void releaseMutex(Database& database) {
    MutexGuard const guard(handOver);
    for (Claim* claim = claims.first; claim != nullptr; claim = claim->next) {
        if (&claim->database_.mutex == &database.mutex) {
            claim->end();
            break;
        }
    }
    unlock(database);
}

void endWriting(Database& database, int state) {
    MutexGuard const guard(handOver);
    database.setState(state);
    wakeFirstWaiter(database.mutex);
}

int saveAndDrop(Database& database) {
    FileName const file = FileName::ofData(database.apiType);
    UTIL_DEBUG("%s: type=%d save object %p to file %s\n", "saveDbObject",
               static_cast<int>(database.apiType), static_cast<void*>(database.document),
               printable(file.get()));
    int const result = JsonData::saveObjectToFile(file.get(), database.document);
    delete database.document;  // also after a failed write: the next lock reads the file again
    database.document = nullptr;
    return result;
}

// Under the guard, as a stray release must not take the lock that this test holds for a moment.
bool isUnlocked(LOCALDB_HANDLER& controller) {
    MutexGuard const guard(handOver);
    for (pthread_mutex_t& mutex : controller.lock) {
        if (pthread_mutex_trylock(&mutex) != 0) {
            return false;
        }
        pthread_mutex_unlock(&mutex);
    }
    return true;
}

Claim::Claim(Database const& acquired) : database_(acquired) {
    MutexGuard const guard(handOver);
    claims.append(this);
}

Claim::~Claim() { release(); }

bool Claim::release() {
    MutexGuard const guard(handOver);
    if (!holds()) {
        return false;
    }
    end();
    database_.setState(DB_STATE_WRITING);  // a program may have changed it, and others go by it
    unlock(database_);
    return true;
}

void Claim::end() {
    claims.remove(this);
    holds_.store(false, std::memory_order_release);
}

}  // namespace vobiutils
