// The lock of a database for the length of a scope, and the way back to the document as it was.
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
// A save that finds the document invalid does nothing, so that any of these ends can follow.
//
// A transaction that only reads drops what it has read itself, and changes nothing else.
#include "LocalDbTransaction.h"

#include <new>
#include <optional>

#include "jsondata/JsonRef.h"
#include "localdb/Condition.h"
#include "localdb/ControllerUse.h"
#include "localdb/DatabaseLock.h"
#include "localdb/FileName.h"
#include "logging/Log.h"

using namespace vobiutils;

namespace {

int const SUCCESS = 0;
int const FAILURE = 2;

CompiledSchema::Fault const NO_FAULT = {"", "", "", ""};

}  // namespace

// Exists from the moment when the database is acquired. The mutex that the claim holds also keeps
// removeDB from destroying the controller.
struct LocalDbTransaction::Lock {
    Lock(Database const& acquired, Mode wanted)
        : database(acquired), mode(wanted), claim(acquired), before(nullptr) {}

    Status prepare(char const* path);
    Status readDocument();
    Status checkDocument();
    Status openNode(char const* path);
    Status giveOut();
    bool isValid();
    template <typename Finish>
    bool end(Finish const& finish);
    void keep();
    void discard();

    Database database;
    Mode const mode;
    Claim claim;
    uint64_t version = 0;    // of the content that the document was read from, if it is known
    bool isInFile = false;   // the document can be read again in place of the one in memory
    bool isDropped = false;  // by a discard
    TreeMapObject* object = nullptr;  // the document's own handle, or the one in `node`
    std::unique_ptr<TreeMapObject> node;
    JsonRef before;               // the copy for a discard that does not drop the document
    CompiledSchema::Fault fault;  // of the last save, if the status is INVALID
};

// The state is "writing" before anything that takes time, so that other callers are refused at
// once. A failure releases the database, and leaves a whole document in memory, or none.
LocalDbTransaction::Status LocalDbTransaction::Lock::prepare(char const* path) {
    bool const wasInMemory = database.state() == DB_STATE_ACCESSIBLE;
    database.setState(DB_STATE_WRITING);
    Status status = wasInMemory ? checkDocument() : readDocument();
    isDropped = mode == WRITE ? isInFile : !wasInMemory;
    if (status == LOCKED) {
        status = openNode(path);
    }
    if (status == LOCKED && mode == WRITE) {
        status = giveOut();
    }
    if (status != LOCKED) {
        end([this] { keep(); });
    }
    return status;
}

LocalDbTransaction::Status LocalDbTransaction::Lock::readDocument() {
    if (!database.tryLoad("LocalDbTransaction", static_cast<int>(database.apiType), version)) {
        return NO_MEMORY;
    }
    if (database.document() == nullptr) {
        return NO_FILE;
    }
    if (!database.hasValue()) {
        database.drop();
        return UNREADABLE;
    }
    isInFile = true;
    return LOCKED;
}

// Reads the document again if its file has been replaced.
LocalDbTransaction::Status LocalDbTransaction::Lock::checkDocument() {
    if (!database.hasValue()) {
        database.drop();
        return UNREADABLE;
    }
    Origin const* const origin = database.origin();
    if (origin == nullptr) {
        return LOCKED;
    }
    isInFile = origin->file != nullptr;
    if (isInFile && !origin->isCurrent(FileName::ofData(database.apiType).get())) {
        database.drop();
        return readDocument();
    }
    version = origin->version;
    return LOCKED;
}

LocalDbTransaction::Status LocalDbTransaction::Lock::openNode(char const* path) {
    object = database.document();
    if (*path != '\0') {
        if (!database.tryGet(path, object)) {
            return NO_MEMORY;
        }
        node.reset(object);
    }
    return object != nullptr ? LOCKED : NO_NODE;
}

// From here on the program may change the document.
LocalDbTransaction::Status LocalDbTransaction::Lock::giveOut() {
    if (!isInFile) {
        json_object* copy = nullptr;
        if (json_object_deep_copy(database.document()->jobj, &copy, nullptr) != 0) {
            return NO_MEMORY;
        }
        before.reset(copy);
    }
    database.forgetOrigin();
    return LOCKED;
}

// Whether the document may be written; nothing is, before this is known of everything.
bool LocalDbTransaction::Lock::isValid() {
    if (database.isValid(fault)) {
        return true;
    }
    // not the path in the document: its names are a user's, who could forge lines of the log
    UTIL_WARN("%s: api type %d is not saved: %s (schema at \"%s\")\n", "LocalDbTransaction",
              static_cast<int>(database.apiType), fault.message, fault.schemaPath);
    return false;
}

// Releases the database; `finish` saves or discards the document between the two halves. False,
// with nothing done, if a plain save or unlock has ended the lock.
//
// Ordinarily the mutex keeps removeDB away. It is free while `finish` works, so the use of the
// controller takes its place before the claim ends.
template <typename Finish>
bool LocalDbTransaction::Lock::end(Finish const& finish) {
    node.reset();
    ControllerUse const use(database.controller);
    if (!claim.release()) {
        return false;
    }
    finish();
    endWriting(database);
    return true;
}

void LocalDbTransaction::Lock::keep() {
    if (mode == READ) {
        discard();
    }
}

void LocalDbTransaction::Lock::discard() {
    if (isDropped) {
        database.drop();
    } else if (before) {
        database.restore(before.release(), version);
    }
}

LocalDbTransaction::LocalDbTransaction(unsigned int apiType, char const* path,
                                       char const* sessionKey, unsigned int milliseconds, Mode mode)
    : status_(BAD_ARGUMENTS), version_(0) {
    ControllerUse use;
    std::optional<Database> database =
        path != nullptr ? use.findDatabase(apiType, sessionKey) : std::optional<Database>();
    if (!database) {
        return;
    }
    timespec const deadline = deadlineIn(milliseconds);
    if ((milliseconds == 0 && database->state() == DB_STATE_WRITING) ||
        !acquire(*database, &deadline)) {
        status_ = BUSY;
        return;
    }
    lock_.reset(new (std::nothrow) Lock(*database, mode));
    if (lock_ == nullptr) {
        release(*database);
        status_ = NO_MEMORY;
        return;
    }
    status_ = lock_->prepare(path);
    if (status_ != LOCKED) {
        lock_.reset();
        return;
    }
    version_ = lock_->version;
}

LocalDbTransaction::~LocalDbTransaction() {
    if (lock_ != nullptr && !lock_->end([this] { lock_->discard(); })) {
        UTIL_ERROR("%s: a plain save or unlock has ended the lock of api type %d\n",
                   "LocalDbTransaction", static_cast<int>(lock_->database.apiType));
    }
}

bool LocalDbTransaction::isHeld() const { return lock_ != nullptr && lock_->claim.holds(); }

LocalDbTransaction::Status LocalDbTransaction::status() const {
    return lock_ != nullptr && !isHeld() ? ENDED : status_;
}

LocalDbTransaction::operator bool() const { return isHeld(); }

uint64_t LocalDbTransaction::version() const { return version_; }

TreeMapObject* LocalDbTransaction::object() const { return isHeld() ? lock_->object : nullptr; }

TreeMapObject* LocalDbTransaction::operator->() const { return object(); }

template <typename Finish>
bool LocalDbTransaction::end(Finish const& finish) {
    if (!isHeld() || !lock_->end(finish)) {
        return false;
    }
    lock_.reset();
    status_ = ENDED;
    return true;
}

CompiledSchema::Fault const& LocalDbTransaction::fault() const {
    return status() == INVALID ? lock_->fault : NO_FAULT;
}

int LocalDbTransaction::save() {
    if (!isHeld() || lock_->mode == READ) {
        return FAILURE;
    }
    if (!lock_->isValid()) {
        status_ = INVALID;
        return FAILURE;
    }
    int result = FAILURE;
    end([&] { result = lock_->database.save(version_); });
    return result;
}

int LocalDbTransaction::keep() {
    return end([this] { lock_->keep(); }) ? SUCCESS : FAILURE;
}
