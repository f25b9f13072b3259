/// \file
/// A change to the local database that either happens as a whole or not at all.
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
/// It locks an API type as LocalDbCtrl::lockDbObject does, says why when it cannot, and ends the
/// lock when it leaves its scope: no return and no exception leaves a type locked or half-changed.
/// What was not saved or kept is discarded: the document in memory is again what it was before.
/// Nothing here throws.
///
/// Threads: a transaction belongs to the thread that made it. Any number of threads may make their
/// own, together with the functions of LocalDbCtrl.h; those of one type follow each other, in the order
/// in which they came. One that is refused holds nothing. removeDB waits for a transaction of the
/// controller to end.
///
/// A transaction and the plain operations are not mixed on one lock: a saveDbObject or unlockDbObject of
/// the type inside the scope ends the lock. From then on the status is ENDED, there is no handle, save and
/// keep return 2, and the end of the scope only logs an error.
#ifndef VOBIUTILS_LOCALDBTRANSACTION_H
#define VOBIUTILS_LOCALDBTRANSACTION_H

#include <memory>

#include "LocalDbCtrl.h"
#include "TreeMapObject.h"

#pragma GCC visibility push(default)

/// \copydoc LocalDbTransaction.h
class LocalDbTransaction {
  public:
    /// What has become of the lock.
    enum Status {
        LOCKED,         ///< the type is locked, and there is a handle
        BUSY,           ///< another writer held or was saving the type until the time was over
        NO_FILE,        ///< the type has no data file
        UNREADABLE,     ///< the data file cannot be read, or holds no JSON
        NO_NODE,        ///< the document has no node at the path; it stays in memory
        BAD_ARGUMENTS,  ///< an API type of 9 or more, a null path, no default controller
        NO_MEMORY,      ///< there was no room for the handle or the copy; nothing is locked
        ENDED,  ///< it was locked, and has been saved or kept, or ended by a plain operation
    };

    /// Locks the type; waits for a busy one for up to `milliseconds`. The path and the key are
    /// those of lockDbObject. The document is copied when it was in memory already, to be put back.
    LocalDbTransaction(unsigned int apiType, char const* path, char const* sessionKey,
                       unsigned int milliseconds = 0);

    /// Ends a lock that is still held, and discards what was changed under it: a document that this
    /// lock has read is dropped, one that was in memory before is put back as it was.
    ~LocalDbTransaction();

    /// \cond
    LocalDbTransaction(LocalDbTransaction const&) = delete;
    LocalDbTransaction& operator=(LocalDbTransaction const&) = delete;
    /// \endcond

    Status status() const;           ///< LOCKED, then ENDED; or why nothing was locked
    explicit operator bool() const;  ///< whether the status is LOCKED

    /// The handle on the node at the path, or on the whole document; null unless LOCKED. It belongs
    /// to the transaction and dies with its end. A node is changed in place, not replaced.
    TreeMapObject* object() const;
    /// The same, for a call on the handle.
    TreeMapObject* operator->() const;

    /// Writes the document to its file and ends the lock, as LocalDbCtrl::saveDbObject does: 0 when
    /// written, 2 when not (the changes are then lost) and when nothing was locked.
    int save();

    /// Leaves the changes in memory, unsaved, and ends the lock, as LocalDbCtrl::unlockDbObject
    /// does: 0; 2 when nothing was locked.
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
