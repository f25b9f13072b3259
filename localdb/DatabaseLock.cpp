// Passes databases from one writer to the next, in the order in which the writers came.
//
// Ordinarily the mutex of a database is free, and acquire() locks it without waiting. Otherwise the
// caller joins the queue and sleeps on a condition variable of its own. Each half of a release
// wakes the first waiter for that database, and only the first waiter tries again.
//
// Waiting in pthread_mutex_lock instead would not do, for three reasons:
// - The mutex is free while a save is still under way (see the header). A thread that locked it then
//   would have to unlock it and try again, in a loop.
// - A mutex promises no order: a thread that locks it again and again can keep others waiting
//   without end.
// - pthread_mutex_timedlock measures its deadline with CLOCK_REALTIME, which can be set.
#include "localdb/DatabaseLock.h"

#include <assert.h>

#include "localdb/Chain.h"
#include "localdb/Condition.h"
#include "logging/MutexGuard.h"

namespace vobiutils {

namespace {

// One mutex for all databases. It is held for a few instructions, while a database passes from one
// thread to another, and guards both chains. While it is held, the
// mutex of a database is only tried, never waited for.
pthread_mutex_t handOver = PTHREAD_MUTEX_INITIALIZER;

// A thread that waits for a database, which the address of its mutex identifies.
struct Waiter {
    explicit Waiter(pthread_mutex_t const& wanted) : mutex(&wanted) {}
    ~Waiter() { released.destroy(); }

    pthread_mutex_t const* const mutex;
    Condition released;  // the mutex is free, or the state is not "writing" any more
    Waiter* next = nullptr;
};

Chain<Waiter> waiters;
Chain<Claim> claims;

// The caller of the functions in this namespace holds handOver.

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

// A waiter that gives up passes on no wake-up: its last attempt found the database busy, and the
// thread that keeps it busy will wake the waiter that is first by then.
bool waitFor(Database& database, timespec const* deadline) {
    Waiter self(database.mutex);
    waiters.append(&self);
    bool inTime = true;
    bool acquired = false;
    while (!acquired && inTime) {
        inTime = self.released.wait(handOver, deadline);  // handOver is free during the wait
        acquired = firstWaiter(database.mutex) == &self && tryAcquire(database);
    }
    assert(!acquired || firstWaiter(database.mutex) == &self);
    waiters.remove(&self);
    return acquired;
}

// Ordinarily the writer frees the mutex that it holds. A save or unlock without a lock comes here
// too, with a mutex that no thread holds: to unlock that is undefined, so it is locked first. No
// other thread comes between the two calls, as all do this under handOver.
void freeMutex(Database& database) {
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

void release(Database& database) {
    MutexGuard const guard(handOver);
    for (Claim* claim = claims.first; claim != nullptr; claim = claim->next) {
        if (&claim->database_.mutex == &database.mutex) {
            claim->end();
            break;
        }
    }
    freeMutex(database);
}

void endWriting(Database& database) {
    MutexGuard const guard(handOver);
    assert(database.state() == DB_STATE_WRITING);
    database.setState(database.idleState());
    wakeFirstWaiter(database.mutex);
}

// Under handOver, so that no stray release unlocks a mutex while this test holds it for a moment.
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
    assert(pthread_mutex_trylock(&database_.mutex) != 0);  // the caller holds it
    claims.append(this);
}

Claim::~Claim() { release(); }

// Ordinarily the state is "writing" already. But it is a public field, and if the program has
// changed it, another writer would acquire the mutex and use the document while it is saved and
// destroyed.
bool Claim::release() {
    MutexGuard const guard(handOver);
    if (!holds()) {
        return false;
    }
    end();
    database_.setState(DB_STATE_WRITING);
    freeMutex(database_);
    return true;
}

void Claim::end() {
    assert(holds());
    claims.remove(this);
    holds_.store(false, std::memory_order_release);
}

}  // namespace vobiutils
