// The lock of a type for the length of a scope.
#include "LocalDbTransaction.h"

#include <new>
#include <optional>

#include "jsondata/JsonRef.h"
#include "localdb/Condition.h"
#include "localdb/ControllerUse.h"
#include "localdb/TypeLock.h"
#include "logging/Log.h"

using namespace vobiutils;

namespace {

int const SUCCESS = 0;
int const FAILURE = 2;

// Whether there is a document, and it has a value.
bool isLoaded(DbSlot const& slot) { return slot.object != nullptr && slot.object->jobj != nullptr; }

void drop(DbSlot& slot) {
    delete slot.object;
    slot.object = nullptr;
}

}  // namespace

// The claim holds the mutex of the type, which keeps removeDB from destroying the controller.
struct LocalDbTransaction::Lock {
    explicit Lock(DbSlot const& acquired) : slot(acquired), claim(acquired), before(nullptr) {}

    Status open(char const* path);
    Status readDocument();
    Status copyDocument();
    Status openNode(char const* path);
    template <typename Finish>
    bool end(Finish const& finish);
    int discard();

    DbSlot slot;
    Claim claim;
    TreeMapObject* object = nullptr;  // the document's own handle, or the one in `node`
    std::unique_ptr<TreeMapObject> node;
    JsonRef before;  // a copy of a document that was in memory already
};

// The state is "writing" before anything that takes time, so that other callers are refused at once. A
// failure releases the type; what it leaves in memory is a whole document, or nothing.
LocalDbTransaction::Status LocalDbTransaction::Lock::open(char const* path) {
    bool const wasLoaded = slot.state() == DB_STATE_ACCESSIBLE;
    slot.setState(DB_STATE_WRITING);
    Status status = wasLoaded ? copyDocument() : readDocument();
    if (status == LOCKED) {
        status = openNode(path);
    }
    if (status != LOCKED) {
        end([this] {
            return slot.object != nullptr ? DB_STATE_ACCESSIBLE : DB_STATE_UNINITIALIZED;
        });
    }
    return status;
}

LocalDbTransaction::Status LocalDbTransaction::Lock::readDocument() {
    if (!slot.tryLoad("LocalDbTransaction", static_cast<int>(slot.apiType))) {
        return NO_MEMORY;
    }
    if (slot.object == nullptr) {
        return NO_FILE;
    }
    if (!isLoaded(slot)) {
        drop(slot);
        return UNREADABLE;
    }
    return LOCKED;
}

LocalDbTransaction::Status LocalDbTransaction::Lock::copyDocument() {
    if (!isLoaded(slot)) {
        drop(slot);
        return UNREADABLE;
    }
    json_object* copy = nullptr;
    if (json_object_deep_copy(slot.object->jobj, &copy, nullptr) != 0) {
        return NO_MEMORY;
    }
    before.reset(copy);
    return LOCKED;
}

LocalDbTransaction::Status LocalDbTransaction::Lock::openNode(char const* path) {
    object = slot.object;
    if (*path != '\0') {
        if (!slot.tryGet(path, object)) {
            return NO_MEMORY;
        }
        node.reset(object);
    }
    return object != nullptr ? LOCKED : NO_NODE;
}

// Releases in the order of TypeLock.h. `finish` does with the document what there is to do, and returns
// the state that follows. False, with nothing done, when a plain save or unlock has ended the lock.
template <typename Finish>
bool LocalDbTransaction::Lock::end(Finish const& finish) {
    node.reset();
    ControllerUse const use(slot.controller);  // begins before the claim ends
    if (!claim.release()) {
        return false;
    }
    endWriting(slot, finish());
    return true;
}

// The handle of a document that was in memory stays: others may know it.
int LocalDbTransaction::Lock::discard() {
    if (!before) {
        drop(slot);
        return DB_STATE_UNINITIALIZED;
    }
    json_object_put(slot.object->jobj);
    slot.object->jobj = before.release();
    return DB_STATE_ACCESSIBLE;
}

LocalDbTransaction::LocalDbTransaction(unsigned int apiType, char const* path,
                                       char const* sessionKey, unsigned int milliseconds)
    : status_(BAD_ARGUMENTS) {
    ControllerUse use;
    std::optional<DbSlot> slot =
        path != nullptr ? use.findSlot(apiType, sessionKey) : std::optional<DbSlot>();
    if (!slot) {
        return;
    }
    timespec const deadline = deadlineIn(milliseconds);
    if ((milliseconds == 0 && slot->state() == DB_STATE_WRITING) || !acquire(*slot, &deadline)) {
        status_ = BUSY;
        return;
    }
    lock_.reset(new (std::nothrow) Lock(*slot));
    if (lock_ == nullptr) {
        releaseMutex(*slot);
        status_ = NO_MEMORY;
        return;
    }
    status_ = lock_->open(path);
    if (status_ != LOCKED) {
        lock_.reset();
    }
}

LocalDbTransaction::~LocalDbTransaction() {
    if (lock_ != nullptr && !lock_->end([this] { return lock_->discard(); })) {
        UTIL_ERROR("%s: a plain save or unlock has ended the lock of api type %d\n",
                   "LocalDbTransaction", static_cast<int>(lock_->slot.apiType));
    }
}

bool LocalDbTransaction::isHeld() const { return lock_ != nullptr && lock_->claim.holds(); }

LocalDbTransaction::Status LocalDbTransaction::status() const {
    return lock_ != nullptr && !isHeld() ? ENDED : status_;
}

LocalDbTransaction::operator bool() const { return isHeld(); }

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

int LocalDbTransaction::save() {
    int result = FAILURE;
    end([&] {
        result = saveAndDrop(lock_->slot);
        return DB_STATE_UNINITIALIZED;
    });
    return result;
}

int LocalDbTransaction::keep() {
    return end([] { return DB_STATE_ACCESSIBLE; }) ? SUCCESS : FAILURE;
}
