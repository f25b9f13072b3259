// What a transaction does with each of its databases.
#include "localdb/TransactionLock.h"

#include <assert.h>

#include <new>
#include <utility>

#include "localdb/ControllerUse.h"
#include "localdb/DatabaseChange.h"
#include "localdb/FileName.h"
#include "logging/Log.h"

namespace vobiutils {

typedef LocalDbTransaction Transaction;

TransactionLock::~TransactionLock() { deleteHandles(); }

// One by one: a chain deletes its nodes from within each other.
void TransactionLock::deleteHandles() {
    while (nodes_ != nullptr) {
        nodes_ = std::move(nodes_->next);
    }
}

// The state is "writing" before anything that takes time, so that other callers are refused at
// once.
Transaction::Status TransactionLock::prepare(char const* path, timespec const& deadline,
                                             TreeMapObject*& object) {
    bool const wasInMemory = database.state() == DB_STATE_ACCESSIBLE;
    database.setState(DB_STATE_WRITING);
    bool const isOurs =
        mode == Transaction::READ || processLock_.acquire(database.apiType, deadline);
    Status status = !isOurs ? Transaction::BUSY : wasInMemory ? checkDocument() : readDocument();
    isDropped_ = mode == Transaction::WRITE ? isInFile_ : !wasInMemory;
    assert(status != Transaction::LOCKED || database.hasValue());
    if (status == Transaction::LOCKED) {
        status = open(path, object);
    }
    if (status == Transaction::LOCKED && mode == Transaction::WRITE) {
        status = giveOut();
    }
    if (status != Transaction::LOCKED) {
        ControllerUse const use(database.controller);
        beginRelease();
        keep();
        endRelease();
    }
    return status;
}

Transaction::Status TransactionLock::readDocument() {
    if (!database.load("LocalDbTransaction", static_cast<int>(database.apiType), version_)) {
        return Transaction::NO_MEMORY;
    }
    if (database.document() == nullptr) {
        return Transaction::NO_FILE;
    }
    if (!database.hasValue()) {
        database.drop();
        return Transaction::UNREADABLE;
    }
    isInFile_ = true;
    return Transaction::LOCKED;
}

bool TransactionLock::isCurrent(Origin const& origin) const {
    return finishChange("LocalDbTransaction") != ChangeState::UNFINISHED &&
           origin.isCurrent(FileName::ofData(database.apiType).get());
}

// Reads the document again if its file has been replaced.
Transaction::Status TransactionLock::checkDocument() {
    if (!database.hasValue()) {
        database.drop();
        return Transaction::UNREADABLE;
    }
    Origin const* const origin = database.origin();
    if (origin == nullptr) {
        return Transaction::LOCKED;
    }
    isInFile_ = origin->file != nullptr;
    if (isInFile_ && !isCurrent(*origin)) {
        database.drop();
        return readDocument();
    }
    version_ = origin->version;
    return Transaction::LOCKED;
}

Transaction::Status TransactionLock::open(char const* path, TreeMapObject*& object) {
    object = database.document();
    if (*path == '\0') {
        return Transaction::LOCKED;
    }
    std::unique_ptr<Node> node(new (std::nothrow) Node);
    if (node == nullptr || !database.tryGet(path, object)) {
        return Transaction::NO_MEMORY;
    }
    node->handle.reset(object);
    node->next = std::move(nodes_);
    nodes_ = std::move(node);
    return object != nullptr ? Transaction::LOCKED : Transaction::NO_NODE;
}

// From here on the program may change the document.
Transaction::Status TransactionLock::giveOut() {
    if (!isInFile_) {
        json_object* copy = nullptr;
        if (json_object_deep_copy(database.document()->jobj, &copy, nullptr) != 0) {
            return Transaction::NO_MEMORY;
        }
        before_.reset(copy);
    }
    database.forgetOrigin();
    return Transaction::LOCKED;
}

bool TransactionLock::isValid(LocalDbTransaction::Fault& found) const {
    if (database.isValid(found)) {
        return true;
    }
    found.apiType = database.apiType;
    // not the path in the document: its names are a user's, who could forge lines of the log
    UTIL_WARN("%s: api type %d is not saved: %s (schema at \"%s\")\n", "LocalDbTransaction",
              static_cast<int>(database.apiType), found.message, found.schemaPath);
    return false;
}

// A document that was read for this lock, or could have been, is the file's.
bool TransactionLock::overwritesAnother() {
    if (isInFile_ || overwrites_ || !database.isFileAnother()) {
        return false;
    }
    overwrites_ = true;
    return true;
}

bool TransactionLock::beginRelease() {
    deleteHandles();
    isReleased_ = claim_.release();
    return isReleased_;
}

void TransactionLock::endRelease() {
    processLock_.release();
    if (isReleased_) {
        endWriting(database);
    }
}

void TransactionLock::keep() {
    if (mode == Transaction::READ) {
        discard();
    }
}

void TransactionLock::discard() {
    if (!isReleased_) {
        return;
    }
    assert(!isDropped_ || !before_);
    if (isDropped_) {
        database.drop();
    } else if (before_) {
        database.restore(before_.release(), version_);
    }
}

}  // namespace vobiutils
