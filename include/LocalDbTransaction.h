/// \file
/// A change to a database that happens either as a whole or not at all.
///
/// \code{.cpp}
/// LocalDbTransaction lan(API_NETWORK, "lan", key);
/// if (!lan) {
///     return answerFor(lan.status());
/// }
/// lan->set("mtu", 1500);
/// return lan.save();
/// \endcode
///
/// It locks the database of an API type as LocalDbCtrl::lockDbObject does, says why if it cannot,
/// and ends the lock when it leaves its scope: no return and no exception leaves a database locked
/// or half-changed. Changes that were neither saved nor kept are discarded: the document in memory
/// is again as it was before. Nothing here throws.
///
/// Threads: a transaction belongs to the thread that made it. Any number of threads may make their
/// own, and use the functions of LocalDbCtrl.h at the same time; those that wait for one database
/// get it in the order in which they came. One that is refused holds nothing. removeDB waits for a
/// transaction of the controller to end.
///
/// Transactions and plain operations are not mixed on one lock: a saveDbObject or unlockDbObject of
/// the same database inside the scope ends the lock. From then on the status is ENDED, there is no
/// handle, save and keep return 2, and the end of the scope only logs an error.
#ifndef VOBIUTILS_LOCALDBTRANSACTION_H
#define VOBIUTILS_LOCALDBTRANSACTION_H

#include <memory>

#include "LocalDbCtrl.h"
#include "TreeMapObject.h"

#pragma GCC visibility push(default)

/// \copydoc LocalDbTransaction.h
class LocalDbTransaction {
  public:
    /// The state of the lock, or why there is none.
    enum Status {
        LOCKED,      ///< the database is locked, and there is a handle
        BUSY,        ///< another writer held or was saving the database until the timeout expired
        NO_FILE,     ///< there is no data file
        UNREADABLE,  ///< the data file cannot be read, or is not JSON
        NO_NODE,     ///< nothing at that path; the document stays in memory
        BAD_ARGUMENTS,  ///< an API type of 9 or more, a null path, no default controller
        NO_MEMORY,      ///< out of memory for the handle or the copy
        ENDED,          ///< it was locked, and then saved, kept or ended by a plain operation
    };

    /// Locks the database, and waits up to `milliseconds` while it is busy. The path and the key
    /// are those of lockDbObject. If the document is in memory already, it is copied so that a
    /// discard can put it back.
    LocalDbTransaction(unsigned int apiType, char const* path, char const* sessionKey,
                       unsigned int milliseconds = 0);

    /// Ends a lock that is still held, and discards its changes: a document that this lock read
    /// from the file is dropped, one that was in memory before is put back as it was.
    ~LocalDbTransaction();

    /// \cond
    LocalDbTransaction(LocalDbTransaction const&) = delete;
    LocalDbTransaction& operator=(LocalDbTransaction const&) = delete;
    /// \endcond

    Status status() const;           ///< LOCKED, then ENDED; or why nothing was locked
    explicit operator bool() const;  ///< whether the status is LOCKED

    /// The handle on the node at the path, or on the whole document; null unless LOCKED. It belongs
    /// to the transaction and must not be used after the lock has ended. A node is changed in
    /// place, not replaced.
    TreeMapObject* object() const;
    /// The same as object(), for a call on the handle.
    TreeMapObject* operator->() const;

    /// Writes the document to its file and ends the lock, as LocalDbCtrl::saveDbObject does.
    /// Returns 0 if it was written; 2 if not (the changes are then lost), and if nothing was
    /// locked.
    int save();

    /// Leaves the changes in memory, unsaved, and ends the lock, as LocalDbCtrl::unlockDbObject
    /// does. Returns 0; 2 if nothing was locked.
    int keep();

  private:
    struct __attribute__((visibility("hidden"))) Lock;

    __attribute__((visibility("hidden"))) bool isHeld() const;
    template <typename Finish>
    __attribute__((visibility("hidden"))) bool end(Finish const& finish);

    std::unique_ptr<Lock> lock_;  // null before LOCKED, and once the transaction has ended the lock
    Status status_;
};

#pragma GCC visibility pop

#endif
