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
/// A change only if no other writer was faster, and a read of what may be unsaved:
///
/// \code{.cpp}
/// LocalDbTransaction wifi(API_WIFI, "ssids.[0]", "default", 500);
/// if (wifi && wifi.version() == versionThatTheUserSaw) {
///     wifi->set("name", name);
///     wifi.save();
/// }
///
/// LocalDbTransaction own(API_WIFI, "ssids", key, 500, LocalDbTransaction::READ);
/// \endcode
///
/// Where the database has a schema, only a valid document is saved:
///
/// \code{.cpp}
/// lan->set("mtu", mtu);
/// if (lan.save() != 0 && lan.status() == LocalDbTransaction::INVALID) {
///     return refuse(lan.fault().path, lan.fault().message);  // "lan.mtu", "must be at most 1500"
/// }
/// \endcode
///
/// Where other programs change the files, too, a document with unsaved changes may be out of date:
///
/// \code{.cpp}
/// if (lan.save() != 0 && lan.status() == LocalDbTransaction::CHANGED) {
///     return force ? lan.save() : lan.forget();  // write over the other's file, or take it
/// }
/// \endcode
///
/// A change to several databases, which is saved as a whole or not at all:
///
/// \code{.cpp}
/// LocalDbTransaction change(API_WIFI, "ssids", key, 500);
/// TreeMapObject* rules = change.also(API_SECURITY, "firewall.rules");
/// if (!change) {
///     return answerFor(change.status());
/// }
/// change->set("[2].enabled", true);
/// rules->set("[0].enabled", true);
/// return change.save();
/// \endcode
///
/// It locks the database of an API type as LocalDbCtrl::lockDbObject does, says why if it cannot,
/// and ends the lock when it leaves its scope: no return and no exception leaves a database locked
/// or half-changed. Changes that were neither saved nor kept are discarded: the document in memory
/// is again as it was before. Nothing here throws.
///
/// Threads: a transaction belongs to the thread that made it. Any number of threads may make their
/// own, and use the functions of LocalDbCtrl.h at the same time; those that wait for one database
/// get it in the order in which they came. One that is refused holds nothing. Two that each want
/// what the other one has do not deadlock: at least one of them times out. removeDB
/// waits for a transaction of the controller to end.
///
/// Processes: transactions of different processes take turns at a database, within the same waiting
/// time, so that none reads what another one is about to replace. Not those that only read, and not
/// plain operations; docs/threads.md says what follows when programs mix. The lock of a process that
/// ends, or is killed, is free at once. Where the file system has no locks, or the process may not
/// make the file `.lock` in the folder of the type, processes do not wait for each other.
///
/// Transactions and plain operations are not mixed on one lock: a saveDbObject or unlockDbObject of
/// the same database inside the scope ends the lock. From then on the status is ENDED, there is no
/// handle, save and keep return 2, and the end of the scope only logs an error.
#ifndef VOBIUTILS_LOCALDBTRANSACTION_H
#define VOBIUTILS_LOCALDBTRANSACTION_H

#include <stdint.h>
#include <time.h>

#include <memory>

#include "CompiledSchema.h"
#include "LocalDbCtrl.h"
#include "TreeMapObject.h"

namespace vobiutils {
class __attribute__((visibility("hidden"))) Database;
class __attribute__((visibility("hidden"))) TransactionLock;
enum class Ending;
}  // namespace vobiutils

#pragma GCC visibility push(default)

/// \copydoc LocalDbTransaction.h
class LocalDbTransaction {
  public:
    /// The state of the lock, or why there is none.
    enum Status {
        LOCKED,         ///< the database is locked, and there is a handle
        BUSY,           ///< another writer, perhaps of another process, held or was saving the
                        ///< database until the timeout expired
        NO_FILE,        ///< there is no data file
        UNREADABLE,     ///< the data file cannot be read, or is not JSON
        NO_NODE,        ///< nothing at that path
        BAD_ARGUMENTS,  ///< an API type of 9 or more, a null path, no default controller
        NO_MEMORY,      ///< out of memory for the document, the handle or the copy
        ENDED,          ///< it was locked, and then saved, kept or ended by a plain operation
        INVALID,        ///< locked still: the last save() refused the document, see fault()
        CHANGED,        ///< locked still: the last save() would have written over another's file
    };

    /// Why a document is not valid, and which one.
    struct Fault : CompiledSchema::Fault {
        unsigned int apiType;  ///< of its database
    };

    /// What the lock is for.
    enum Mode {
        WRITE,  ///< to change the document, and save, keep or discard that
        READ,   ///< only to read: nothing may be changed through the handle
    };

    /// Locks the database, and waits up to `milliseconds` while it is busy. The path and the key
    /// are those of lockDbObject.
    ///
    /// WRITE copies a document that is in memory and cannot be read again from the file, so that a
    /// discard can put it back: one that may hold unsaved changes, and one that a session's own
    /// controller was made with. READ copies nothing.
    LocalDbTransaction(unsigned int apiType, char const* path, char const* sessionKey,
                       unsigned int milliseconds = 0, Mode mode = WRITE);

    /// Ends a lock that is still held, and discards its changes: a document that was copied is put
    /// back as it was, any other is dropped, and the next lock reads the file. After READ, memory
    /// is as it was before.
    ~LocalDbTransaction();

    /// \cond
    LocalDbTransaction(LocalDbTransaction const&) = delete;
    LocalDbTransaction& operator=(LocalDbTransaction const&) = delete;
    /// \endcond

    /// Locks the database of a further API type, in the same controller and for the same purpose,
    /// and waits for it within the time that is left of the constructor's; when none is, it tries
    /// once. A type that is locked already gives a further node. Returns the handle on the node at
    /// `path`, on the whole document for the empty path; it belongs to the transaction, as object()
    /// does. A node that is replaced or deleted through another handle takes its own with it.
    ///
    /// Null if that fails: status() says why, and the whole transaction has ended. All its changes
    /// are discarded, nothing is held, and every handle that it has given is gone. Null, too, with
    /// nothing changed, if the transaction is not open.
    TreeMapObject* also(unsigned int apiType, char const* path);

    /// LOCKED, INVALID or CHANGED, then ENDED; or why nothing was locked.
    Status status() const;
    explicit operator bool() const;  ///< true while locked: LOCKED, INVALID, CHANGED

    /// Where and why the last save() found a document not valid, with a path inside the whole
    /// document; four empty strings, and no API type, if it did not. Changes with the next save(),
    /// and is valid as long as this object.
    Fault const& fault() const;

    /// Identifies the content of the file that the document of the constructor's API type was read
    /// from, as LocalDbSnapshot::version() does; 0 if the document was in memory and may hold unsaved
    /// changes. After a save() that returned 0, that of the content which it wrote. 0 if nothing
    /// was locked.
    uint64_t version() const;

    /// The handle on the node at the path, or on the whole document; null unless locked. It belongs
    /// to the transaction and must not be used after the lock has ended. A node is changed in
    /// place, not replaced.
    TreeMapObject* object() const;
    /// The same as object(), for a call on the handle.
    TreeMapObject* operator->() const;

    /// Writes the document to its file and ends the lock, as LocalDbCtrl::saveDbObject does.
    /// Returns 0 if it was written; 2 if not (the changes are then lost), and if nothing was
    /// locked. After READ it does nothing and returns 2: the lock does not end.
    ///
    /// With several databases, every file is written or none, whatever comes between, be it a loss
    /// of power. Documents that are as their files are left out. The result is 2, with nothing
    /// changed, too, where a file could only be written in place (docs/saving.md). If a step fails
    /// when the change counts already, it is 2, and the next call that locks, reads or saves one
    /// of the databases finishes the change.
    ///
    /// A document that does not satisfy the schema beside its file (network/network_SCHEMA.ldb) is
    /// not written, whether the change or an earlier one made it invalid; nor is any while that
    /// schema exists and cannot be used. save() then returns 2 with the status INVALID, and the lock
    /// does not end: put the document right and save again, keep it, or let it go.
    ///
    /// Nor is a document written over a file that is not the one which it was read from: its file was
    /// replaced, changed or removed while the controller held it with unsaved changes, or, in a
    /// session's own controller, since that was made or has last read it. Another process may have
    /// done so, another session, or a user. save() then returns 2 with the status CHANGED, and the
    /// lock does not end: save again to write over the file, forget() to take it, keep the document,
    /// or let it go. With several databases, nothing is written if one of them is so. Any other
    /// document is read again by the lock if its file has changed.
    int save();

    /// Leaves the changes in memory, unsaved, and ends the lock, as LocalDbCtrl::unlockDbObject
    /// does. Returns 0; 2 if nothing was locked. After READ, memory is as it was before.
    int keep();

    /// Drops the documents of all databases that it has locked, with what was unsaved before the
    /// lock, and ends the lock: the next lock reads the files. Returns 0; 2 if nothing was locked.
    /// After READ it does nothing and returns 2: the lock does not end.
    int forget();

  private:
    __attribute__((visibility("hidden"))) Status lock(vobiutils::Database const& wanted,
                                                      char const* path, Mode mode,
                                                      TreeMapObject*& object);
    __attribute__((visibility("hidden"))) Status openAlso(unsigned int apiType, char const* path,
                                                          TreeMapObject*& object);
    __attribute__((visibility("hidden"))) bool isHeld() const;
    __attribute__((visibility("hidden"))) bool areValid();
    __attribute__((visibility("hidden"))) bool overwritesAnother();
    __attribute__((visibility("hidden"))) void discard();
    __attribute__((visibility("hidden"))) int end(vobiutils::Ending ending);

    std::unique_ptr<vobiutils::TransactionLock> locks_;  // null once the transaction has ended them
    TreeMapObject* object_;
    Status status_;
    uint64_t version_;
    timespec deadline_;  // on CLOCK_MONOTONIC
    Fault fault_;
};

#pragma GCC visibility pop

#endif
