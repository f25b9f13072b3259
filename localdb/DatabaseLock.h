// Locking one API type of one controller: what the plain operations and the transaction share.
//
// The mutex serializes writers. It is held across public calls, so no scope guard fits. The state word
// lets a latecomer be refused at once instead of blocking.
//
// A release frees the mutex first and changes the state last, when the document is saved and
// destroyed. In between the state still reads 2, and the releasing thread alone owns the document: the
// mutex cannot be acquired then.
//
// Waiting callers acquire a type in the order in which they came, so none is overtaken without end.
#ifndef VOBIUTILS_LOCALDB_DATABASELOCK_H
#define VOBIUTILS_LOCALDB_DATABASELOCK_H

#include <time.h>

#include <atomic>

#include "localdb/Database.h"

namespace vobiutils {

// Returns holding the mutex of a type that no other thread is writing, saving or destroying. With a
// deadline on CLOCK_MONOTONIC, false when that passes first.
bool acquire(Database& database, timespec const* deadline = nullptr);

// The first half of a plain release. Unlocking a mutex that is not held is undefined, so a free one is
// locked first. A transaction's claim to the type ends.
void releaseMutex(Database& database);

// The second half of a release: leaves the "writing" state for `state` and wakes the first waiter.
void endWriting(Database& database, int state);

// Writes the document to its file and drops it. 0 or 2.
int saveAndDrop(Database& database);

// Whether no thread holds one of the controller's nine mutexes.
bool isUnlocked(LOCALDB_HANDLER& controller);

// A transaction's claim to a type that it has acquired. A plain save or unlock of the type in the middle
// of it ends the claim: the mutex is then free, or another writer's.
class Claim {
  public:
    explicit Claim(Database const& acquired);
    ~Claim();
    Claim(Claim const&) = delete;
    Claim& operator=(Claim const&) = delete;

    // False once it was released, or lost to a plain release.
    bool holds() const { return holds_.load(std::memory_order_acquire); }

    // The first half of a release, and the end of the claim. False, with nothing released, when it does
    // not hold any more.
    bool release();

    Claim* next = nullptr;  // in the chain of all claims

  private:
    friend void releaseMutex(Database& database);
    void end();

    Database database_;
    std::atomic<bool> holds_ = true;
};

}  // namespace vobiutils

#endif
