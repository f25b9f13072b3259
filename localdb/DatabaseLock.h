// The lock of a database, shared by the plain operations (LocalDbCtrl) and by LocalDbTransaction.
//
// Ordinarily a writer acquires the mutex, sets the state to "writing" so that latecomers are
// refused at once instead of blocking, changes the document, and releases. The mutex is held across
// public calls, so no scope guard fits.
//
// A release has two halves, and the mutex is free while the document is still being saved:
//
//     step of the writer        mutex after it  state after it  who may use the document
//     acquire                   held            0 or 1          the writer
//     sets the state, changes   held            2               the writer
//     release                   free            2               still the writer
//     saves and drops it        free            2               still the writer
//     endWriting                free            0 or 1          who acquires the mutex next
//
// The mutex is freed first because a lock that gave null has left it held without "writing", and a
// save or unlock frees that one too, with nothing to save. The state changes last because another
// writer could otherwise get a document that is being destroyed. So a free mutex is not enough:
// acquire() also waits until the state is not "writing".
#pragma once

#include <time.h>

#include <atomic>

#include "localdb/Database.h"

namespace vobiutils {

// Returns true, holding the mutex, when no other thread is writing, saving or destroying the
// database; callers that wait are served in the order in which they came. Returns false if the
// deadline, an instant on CLOCK_MONOTONIC, passes first; without one it waits without limit.
bool acquire(Database& database, timespec const* deadline = nullptr);

// The first half of a plain release: frees the mutex, which need not be held, and ends a
// transaction's claim to the database.
void release(Database& database);

// The second half of every release: leaves the "writing" state for the idle one, and wakes the
// first waiter.
void endWriting(Database& database);

// Whether no thread holds one of the controller's nine mutexes.
bool isUnlocked(LOCALDB_HANDLER& controller);

// The claim of a transaction to a database that it has acquired.
//
// Ordinarily the transaction itself releases the database, and its claim ends with that. But a
// plain save or unlock of the same database inside the transaction's scope releases it first. The
// mutex is then free or held by another writer, and the transaction must leave it alone. The plain
// operation knows only the database, so all claims are in one chain, where release() finds and ends
// this one.
class Claim {
  public:
    explicit Claim(Database const& acquired);
    ~Claim();  // releases the database if the claim still holds
    Claim(Claim const&) = delete;
    Claim& operator=(Claim const&) = delete;

    // False once the claim has ended.
    bool holds() const { return holds_.load(std::memory_order_acquire); }

    // The first half of a transaction's release: frees the mutex and ends the claim. False, with
    // nothing released, if the claim has ended already.
    bool release();

    Claim* next = nullptr;  // in the chain of all claims

  private:
    friend void release(Database& database);
    void end();

    Database database_;
    std::atomic<bool> holds_ = true;
};

}  // namespace vobiutils
