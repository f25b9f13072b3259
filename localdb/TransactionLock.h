// The lock of one database in a transaction, and the way back to the document as it was.
//
// Ordinarily a transaction ends with save() or keep(). Otherwise what was changed is discarded, and
// how depends on where the document was before the lock:
//
//     document before                     for a discard   a discard
//     in its file only                    nothing         drops it: the next lock reads the file
//     in memory, of the default           nothing         drops it
//       controller, and unchanged
//     in memory, any other                a copy of it    puts the copy back
//
// A transaction that only reads drops what it has read itself, and changes nothing else.
#pragma once

#include <memory>

#include "LocalDbTransaction.h"
#include "TreeMapObject.h"
#include "jsondata/JsonRef.h"
#include "localdb/DatabaseLock.h"
#include "localdb/ProcessLock.h"

namespace vobiutils {

// Exists from the moment when the database is acquired. The mutex that the claim holds also keeps
// removeDB from destroying the controller. The locks of a transaction are in a list, and end
// together.
class TransactionLock {
  public:
    typedef LocalDbTransaction::Status Status;
    typedef LocalDbTransaction::Mode Mode;

    TransactionLock(Database const& acquired, Mode wanted)
        : database(acquired), mode(wanted), claim_(acquired), before_(nullptr) {}
    ~TransactionLock();
    TransactionLock(TransactionLock const&) = delete;
    TransactionLock& operator=(TransactionLock const&) = delete;

    // Waits for other processes, reads the document or looks whether it is current, and opens the
    // node at `path`. Without LOCKED the database is released, and memory has a whole document, or
    // none.
    Status prepare(char const* path, timespec const& deadline, TreeMapObject*& object);

    // Sets `object` to the document's own handle, or to one on the node at `path` that lives until
    // the end of the lock.
    Status open(char const* path, TreeMapObject*& object);

    // Whether the document may be written; nothing is, before this is known of everything.
    bool isValid(LocalDbTransaction::Fault& found) const;

    // Whether a save would write over a file that is not the one which the document was read from.
    // Answers that once; from then on the caller knows.
    bool overwritesAnother();

    // False once a plain save or unlock has ended the lock.
    bool isHeld() const { return claim_.holds(); }

    // Ends the lock: between the two halves of the release, the document is saved, kept or
    // discarded. The first half is false, with nothing released, if the lock has ended already.
    bool beginRelease();
    void endRelease();

    void keep();
    void discard();
    void forget() { database.drop(); }

    // Of the content that the document was read from; 0 if that is not known.
    uint64_t version() const { return version_; }

    Database database;
    Mode const mode;
    std::unique_ptr<TransactionLock> next;

  private:
    struct Node {
        std::unique_ptr<TreeMapObject> handle;
        std::unique_ptr<Node> next;
    };

    Status readDocument();
    Status checkDocument();
    bool isCurrent(Origin const& origin) const;
    Status giveOut();
    void deleteHandles();

    Claim claim_;
    ProcessLock processLock_;  // not of a transaction that only reads
    uint64_t version_ = 0;
    bool isInFile_ = false;    // the document can be read again in place of the one in memory
    bool isDropped_ = false;   // by a discard
    bool overwrites_ = false;  // another's file, as the caller knows
    bool isReleased_ = false;  // the first half of the release is over, the second is not
    std::unique_ptr<Node> nodes_;
    JsonRef before_;  // the copy for a discard that does not drop the document
};

}  // namespace vobiutils
