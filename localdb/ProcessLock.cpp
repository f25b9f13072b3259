// Opens, shares and frees the side file.
#include "localdb/ProcessLock.h"

#include <assert.h>
#include <errno.h>
#include <pthread.h>
#include <sys/stat.h>

#include "localdb/Chain.h"
#include "localdb/Condition.h"
#include "localdb/FileName.h"
#include "logging/MutexGuard.h"

namespace vobiutils {

namespace {

unsigned int const SLEEP_MS = 2;  // between two attempts: flock knows no deadline

// Guards the chain. Never held while a thread waits for a lock.
pthread_mutex_t chainLock = PTHREAD_MUTEX_INITIALIZER;
constinit Chain<ProcessLock> held;

// Gives the side file the data file's mode and owner, or only its group where the owner cannot be set,
// so that the users of the data file can take the lock.
void takeAccessOf(struct stat const& data, FileDescriptor const& file) {
    if (fchown(file.get(), data.st_uid, data.st_gid) != 0 &&
        fchown(file.get(), static_cast<uid_t>(-1), data.st_gid) != 0) {
        // then the file stays the process's own
    }
    fchmod(file.get(), data.st_mode & 0777);
}

// False with errno. Access is given to a new file only: another name of some file of another user
// could have been put in this place.
bool open(unsigned int apiType, FileDescriptor& file) {
    FileName const name = FileName::ofLock(apiType);
    FileName const dataFile = FileName::ofData(apiType);
    if (name.get() == nullptr || dataFile.get() == nullptr) {
        errno = ENOENT;
        return false;
    }
    int const flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK;
    if (file.open(name.get(), flags)) {
        return true;
    }
    struct stat data;
    if (errno != ENOENT || stat(dataFile.get(), &data) != 0 ||
        !file.open(name.get(), flags | O_CREAT | O_EXCL, data.st_mode & 0777)) {
        return false;
    }
    takeAccessOf(data, file);
    return true;
}

// Of another process that has the lock or has just made the file, and of want of descriptors.
bool mayPass(int error) {
    return error == EWOULDBLOCK || error == EEXIST || error == EMFILE || error == ENFILE ||
           error == ENOMEM;
}

}  // namespace

bool ProcessLock::acquire(unsigned int apiType, timespec const& deadline) {
    assert(!file_);
    bool inTime = true;
    bool acquired = tryAcquire(apiType);
    while (!acquired && inTime) {
        timespec const soon = deadlineIn(SLEEP_MS);
        inTime = isBefore(soon, deadline);
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, inTime ? &soon : &deadline, nullptr);
        acquired = tryAcquire(apiType);
    }
    return acquired;
}

bool ProcessLock::tryAcquire(unsigned int apiType) {
    MutexGuard const guard(chainLock);
    if (open(apiType, file_) && lock()) {
        held.append(this);
        return true;
    }
    int const error = errno;
    file_.close();
    return !mayPass(error);
}

// The second descriptor of the same open file has the same lock; the second open file would have to
// wait for the first.
bool ProcessLock::lock() {
    struct stat status;
    if (fstat(file_.get(), &status) != 0) {
        return false;
    }
    device_ = status.st_dev;
    inode_ = status.st_ino;
    process_ = getpid();
    ProcessLock const* const shared = findShared();
    assert(shared == nullptr || shared->file_);
    return shared != nullptr ? file_.duplicate(shared->file_) : file_.tryLock();
}

// What a child made by fork has inherited is its parent's.
ProcessLock const* ProcessLock::findShared() const {
    ProcessLock const* lock = held.first;
    while (lock != nullptr &&
           (lock->inode_ != inode_ || lock->device_ != device_ || lock->process_ != process_)) {
        lock = lock->next;
    }
    return lock;
}

void ProcessLock::release() {
    if (!file_) {
        return;
    }
    MutexGuard const guard(chainLock);
    held.remove(this);
    if (findShared() == nullptr && process_ == getpid()) {
        file_.unlock();
    }
    file_.close();
}

}  // namespace vobiutils
