// A transaction: one or more databases, locked one after another and released together.
//
// The end of a transaction has the two halves of every release (DatabaseLock.h), each for all
// databases before the next: their mutexes are freed, the documents are saved, kept or discarded,
// their states are changed. It takes no memory.
//
// A save that finds a document invalid, or a file changed, does nothing, so that any of these ends
// can follow.
#include "LocalDbTransaction.h"

#include <assert.h>

#include <new>
#include <optional>
#include <utility>

#include "localdb/Condition.h"
#include "localdb/ControllerUse.h"
#include "localdb/DatabaseChange.h"
#include "localdb/TransactionLock.h"
#include "logging/Log.h"

using namespace vobiutils;

enum class vobiutils::Ending { SAVE, KEEP, FORGET, DISCARD };

namespace {

int const SUCCESS = 0;
int const FAILURE = 2;

void clear(LocalDbTransaction::Fault& fault) {
    fault = {};
    fault.apiType = API_TYPE_COUNT;
}

template <typename Action>
void forAll(TransactionLock& first, Action const& action) {
    for (TransactionLock* lock = &first; lock != nullptr; lock = lock->next.get()) {
        action(*lock);
    }
}

bool areHeld(TransactionLock& first) {
    bool result = true;
    forAll(first, [&](TransactionLock const& lock) { result = result && lock.isHeld(); });
    return result;
}

bool beginRelease(TransactionLock& first) {
    bool areReleased = true;
    forAll(first, [&](TransactionLock& lock) {
        if (!lock.beginRelease()) {
            UTIL_ERROR("%s: a plain save or unlock has ended the lock of api type %d\n",
                       "LocalDbTransaction", static_cast<int>(lock.database.apiType));
            areReleased = false;
        }
    });
    return areReleased;
}

int saveAll(TransactionLock& first, uint64_t& version) {
    if (first.next == nullptr) {
        return first.database.save(version);
    }
    DatabaseChange change;
    bool canBeSaved = finishChange("LocalDbTransaction") != ChangeState::UNFINISHED;
    forAll(first, [&](TransactionLock const& lock) {
        canBeSaved = canBeSaved && change.add(lock.database);
    });
    int const result = canBeSaved ? change.save() : FAILURE;
    version = result == SUCCESS ? change.version() : version;
    forAll(first, [](TransactionLock& lock) { lock.database.drop(); });
    return result;
}

// Between the two halves of the release.
int finish(TransactionLock& first, Ending ending, uint64_t& version) {
    if (ending == Ending::SAVE) {
        return saveAll(first, version);
    }
    forAll(first, [ending](TransactionLock& lock) {
        switch (ending) {
            case Ending::KEEP: lock.keep(); break;
            case Ending::FORGET: lock.forget(); break;
            default: lock.discard(); break;
        }
    });
    return SUCCESS;
}

// Releases the databases. Fails, with all discarded, if a plain save or unlock has ended one of the
// locks.
//
// Ordinarily the mutexes keep removeDB away. They are free while the documents are saved, so the use
// of the controller takes their place before the claims end.
int release(TransactionLock& first, Ending ending, uint64_t& version) {
    ControllerUse const use(first.database.controller);
    bool const areReleased = beginRelease(first);
    int const result = finish(first, areReleased ? ending : Ending::DISCARD, version);
    forAll(first, [](TransactionLock& lock) { lock.endRelease(); });
    return areReleased ? result : FAILURE;
}

}  // namespace

LocalDbTransaction::LocalDbTransaction(unsigned int apiType, char const* path,
                                       char const* sessionKey, unsigned int milliseconds, Mode mode)
    : object_(nullptr), status_(BAD_ARGUMENTS), version_(0), deadline_(deadlineIn(milliseconds)) {
    clear(fault_);
    ControllerUse use;
    std::optional<Database> const database =
        path != nullptr ? use.findDatabase(apiType, sessionKey) : std::optional<Database>();
    if (!database) {
        return;
    }
    if (milliseconds == 0 && database->state() == DB_STATE_WRITING) {
        status_ = BUSY;
        return;
    }
    status_ = lock(*database, path, mode, object_);
    version_ = locks_ != nullptr ? locks_->version() : 0;
}

// Locks a further database, and opens a node in it. Without LOCKED, it is not locked.
LocalDbTransaction::Status LocalDbTransaction::lock(Database const& wanted, char const* path,
                                                    Mode mode, TreeMapObject*& object) {
    Database database(wanted);
    if (!acquire(database, &deadline_)) {
        return BUSY;
    }
    std::unique_ptr<TransactionLock> added(new (std::nothrow) TransactionLock(database, mode));
    if (added == nullptr) {
        vobiutils::release(database);
        return NO_MEMORY;
    }
    Status const status = added->prepare(path, deadline_, object);
    assert(status != LOCKED || object != nullptr);
    assert(status == LOCKED || !added->isHeld());
    if (status == LOCKED) {
        std::unique_ptr<TransactionLock>* end = &locks_;
        while (*end != nullptr) {
            end = &(*end)->next;
        }
        *end = std::move(added);
    }
    return status;
}

LocalDbTransaction::~LocalDbTransaction() { discard(); }

void LocalDbTransaction::discard() {
    if (locks_ != nullptr) {
        ::release(*locks_, Ending::DISCARD, version_);
        locks_.reset();
    }
}

TreeMapObject* LocalDbTransaction::also(unsigned int apiType, char const* path) {
    if (!isHeld()) {
        return nullptr;
    }
    TreeMapObject* object = nullptr;
    Status const status = path != nullptr && apiType < API_TYPE_COUNT
                              ? openAlso(apiType, path, object)
                              : BAD_ARGUMENTS;
    if (status != LOCKED) {
        discard();
        status_ = status;
        return nullptr;
    }
    return isHeld() ? object : nullptr;
}

LocalDbTransaction::Status LocalDbTransaction::openAlso(unsigned int apiType, char const* path,
                                                        TreeMapObject*& object) {
    for (TransactionLock* lock = locks_.get(); lock != nullptr; lock = lock->next.get()) {
        if (lock->database.apiType == apiType) {
            return lock->open(path, object);
        }
    }
    ControllerUse const use(locks_->database.controller);  // should a plain unlock come meanwhile
    return lock(locks_->database.sibling(apiType), path, locks_->mode, object);
}

bool LocalDbTransaction::isHeld() const { return locks_ != nullptr && areHeld(*locks_); }

LocalDbTransaction::Status LocalDbTransaction::status() const {
    return locks_ != nullptr && !isHeld() ? ENDED : status_;
}

LocalDbTransaction::operator bool() const { return isHeld(); }

uint64_t LocalDbTransaction::version() const { return version_; }

TreeMapObject* LocalDbTransaction::object() const { return isHeld() ? object_ : nullptr; }

TreeMapObject* LocalDbTransaction::operator->() const { return object(); }

LocalDbTransaction::Fault const& LocalDbTransaction::fault() const { return fault_; }

int LocalDbTransaction::end(Ending ending) {
    int const result = ::release(*locks_, ending, version_);
    locks_.reset();
    status_ = ENDED;
    return result;
}

// Before anything is written.
bool LocalDbTransaction::areValid() {
    for (TransactionLock* lock = locks_.get(); lock != nullptr; lock = lock->next.get()) {
        if (!lock->isValid(fault_)) {
            return false;
        }
    }
    return true;
}

// Before anything is written. Looks at every file, so that the next save writes over them.
bool LocalDbTransaction::overwritesAnother() {
    bool result = false;
    forAll(*locks_, [&](TransactionLock& lock) { result = lock.overwritesAnother() || result; });
    return result;
}

int LocalDbTransaction::save() {
    clear(fault_);
    if (!isHeld() || locks_->mode == READ) {
        return FAILURE;
    }
    if (!areValid()) {
        status_ = INVALID;
        return FAILURE;
    }
    if (overwritesAnother()) {
        status_ = CHANGED;
        return FAILURE;
    }
    return end(Ending::SAVE);
}

int LocalDbTransaction::keep() { return isHeld() ? end(Ending::KEEP) : FAILURE; }

int LocalDbTransaction::forget() {
    return isHeld() && locks_->mode == WRITE ? end(Ending::FORGET) : FAILURE;
}
