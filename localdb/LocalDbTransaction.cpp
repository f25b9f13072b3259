// The lock of a type for the length of a scope.
#include "LocalDbTransaction.h"

#include <time.h>

#include <memory>
#include <new>

#include "JsonRef.h"
#include "TypeLock.h"

namespace {

int const FAILURE = 2;

timespec deadlineIn(unsigned int milliseconds) {
    timespec deadline = {0, 0};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += static_cast<time_t>(milliseconds / 1000U);
    deadline.tv_nsec += static_cast<long>(milliseconds % 1000U) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        deadline.tv_nsec -= 1000000000L;
        ++deadline.tv_sec;
    }
    return deadline;
}

// Whether the document has a value; one without is of no use to anybody.
bool isLoaded(DbSlot const& slot) { return slot.object != nullptr && slot.object->jobj != nullptr; }

void drop(DbSlot& slot) {
    delete slot.object;
    slot.object = nullptr;
}

// Frees a type that was never written: the state says whether it has a document.
void giveUp(DbSlot& slot) {
    slot.setState(slot.object != nullptr ? DB_STATE_ACCESSIBLE : DB_STATE_UNINITIALIZED);
    releaseMutex(slot);
}

}  // namespace

struct LocalDbTransaction::Lock {
    explicit Lock(DbSlot const& locked) : slot(locked), before(nullptr) {}

    Status open(char const* path);
    Status openNode(char const* path);
    template <typename Finish>
    void end(Finish const& finish);
    int discard();

    DbSlot slot;
    TreeMapObject* object = nullptr;  // the document's own handle, or the one in `node`
    std::unique_ptr<TreeMapObject> node;
    JsonRef before;  // a copy of a document that was in memory already
};

// Reads the document, or copies the one that is there. What it leaves in memory when it fails is
// what a reader may have: a document, or nothing.
LocalDbTransaction::Status LocalDbTransaction::Lock::open(char const* path) {
    bool const wasLoaded = slot.state() == DB_STATE_ACCESSIBLE;
    if (!wasLoaded) {
        if (!slot.tryLoad("LocalDbTransaction", static_cast<int>(slot.apiType))) {
            return NO_MEMORY;
        }
        if (slot.object == nullptr) {
            return NO_FILE;
        }
    }
    if (!isLoaded(slot)) {
        drop(slot);
        return UNREADABLE;
    }
    json_object* copy = nullptr;
    if (wasLoaded && json_object_deep_copy(slot.object->jobj, &copy, nullptr) != 0) {
        return NO_MEMORY;
    }
    before.reset(copy);
    return openNode(path);
}

LocalDbTransaction::Status LocalDbTransaction::Lock::openNode(char const* path) {
    object = slot.object;
    if (*path != '\0') {
        if (!slot.tryGet(path, object)) {
            return NO_MEMORY;
        }
        node.reset(object);
    }
    if (object == nullptr) {
        return NO_NODE;
    }
    slot.setState(DB_STATE_WRITING);
    return LOCKED;
}

// In the order of TypeLock.h. `finish` does with the document what there is to do, and gives the state
// that follows.
template <typename Finish>
void LocalDbTransaction::Lock::end(Finish const& finish) {
    node.reset();
    releaseMutex(slot);
    endWriting(slot, finish());
    delete this;  // made by new, and of no more use
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
    : lock_(nullptr), status_(BAD_ARGUMENTS) {
    std::optional<DbSlot> slot =
        path != nullptr ? findSlot(apiType, sessionKey) : std::optional<DbSlot>();
    if (!slot) {
        return;
    }
    if ((milliseconds == 0 && slot->state() == DB_STATE_WRITING) ||
        !acquireBefore(*slot, deadlineIn(milliseconds))) {
        status_ = BUSY;
        return;
    }
    lock_ = new (std::nothrow) Lock(*slot);
    status_ = lock_ != nullptr ? lock_->open(path) : NO_MEMORY;
    if (status_ != LOCKED) {
        delete lock_;
        lock_ = nullptr;
        giveUp(*slot);
    }
}

LocalDbTransaction::~LocalDbTransaction() {
    if (lock_ != nullptr) {
        lock_->end([this] { return lock_->discard(); });
    }
}

LocalDbTransaction::Status LocalDbTransaction::status() const { return status_; }

LocalDbTransaction::operator bool() const { return status_ == LOCKED; }

TreeMapObject* LocalDbTransaction::object() const {
    return lock_ != nullptr ? lock_->object : nullptr;
}

TreeMapObject* LocalDbTransaction::operator->() const { return object(); }

int LocalDbTransaction::save() {
    if (lock_ == nullptr) {
        return FAILURE;
    }
    int result = FAILURE;
    lock_->end([&] {
        result = saveAndDrop(lock_->slot);
        return DB_STATE_UNINITIALIZED;
    });
    lock_ = nullptr;
    status_ = ENDED;
    return result;
}

int LocalDbTransaction::keep() {
    if (lock_ == nullptr) {
        return FAILURE;
    }
    lock_->end([] { return DB_STATE_ACCESSIBLE; });
    lock_ = nullptr;
    status_ = ENDED;
    return 0;
}
