// Creates, locks, fills and renames the temporary file.
#include "jsondata/files/TemporaryFile.h"

#include <assert.h>
#include <stdio.h>

namespace vobiutils {

TemporaryFile::~TemporaryFile() {
    if (exists_) {
        unlink(name_);  // while it is locked: afterwards the name may be another writer's
    }
    if (lock_) {
        lock_.unlock();
    }
}

bool TemporaryFile::create(mode_t mode) {
    while (!exists_) {
        bool const done = file_.open(name_, O_WRONLY | O_CREAT | O_EXCL, mode)
                              ? lockNew()
                              : errno == EEXIST && (removeStale() || turnToNextName());
        if (!done) {
            return false;
        }
    }
    return lock_.duplicate(file_);
}

// Locks the file just created. Another process may have locked it first, as a leftover, and removed
// it: it then has no name any more, and exists_ stays false, so that create tries again.
bool TemporaryFile::lockNew() {
    if (!file_.lock() || fstat(file_.get(), &made_) != 0) {
        unlink(name_);
        return false;
    }
    exists_ = made_.st_nlink > 0;
    return true;
}

bool TemporaryFile::turnToNextName() {
    if (digit_ == '9') {
        errno = EEXIST;
        return false;
    }
    ++digit_;
    name_[firstLength_] = digit_;
    name_[firstLength_ + 1] = '\0';
    return true;
}

// Ordinarily the name is free, or its file's lock is. Once this call has the lock, the name may
// belong to another file, because the former holder has renamed or removed the one that was opened
// here:
//
//   here                             the other writer
//   open ".NAME.saving", block
//                                    rename ".NAME.saving" to "NAME", unlock
//                                    create another ".NAME.saving"
//   get the lock of what is "NAME" now
//
// So the name is removed only if it still leads to the file that is locked.
bool TemporaryFile::removeStale() const {
    int const flags = O_NONBLOCK | O_NOFOLLOW;
    FileDescriptor stale(name_, O_RDONLY | flags);
    if (!stale && (errno != EACCES || !stale.open(name_, O_WRONLY | flags))) {
        return errno == ENOENT;
    }
    struct stat locked;
    struct stat named;
    if (!stale.lock() || fstat(stale.get(), &locked) != 0) {
        return false;
    }
    if (lstat(name_, &named) != 0) {
        return errno == ENOENT;
    }
    bool const isTheSame = locked.st_dev == named.st_dev && locked.st_ino == named.st_ino;
    return !isTheSame || unlink(name_) == 0;
}

// In this order, no one may read the file in between who may not read the old one. The mode before
// the access control list would give the group what the list's mask allows to others; either of
// them before the owner would give it to the process's own group.
bool TemporaryFile::takeAccessOf(struct stat const& old, FileAttributes const& attributes) {
    bool const isOurs = old.st_uid == made_.st_uid && old.st_gid == made_.st_gid;
    if (!isOurs && fchown(file_.get(), old.st_uid, old.st_gid) != 0 &&
        fchown(file_.get(), static_cast<uid_t>(-1), old.st_gid) != 0) {
        // then the file stays the process's own: only root may give files away
    }
    if (!attributes.copyTo(file_.get())) {
        return false;
    }
    bool const asItWas = isOurs && old.st_mode == made_.st_mode;
    return asItWas || fchmod(file_.get(), old.st_mode & 07777) == 0;
}

bool TemporaryFile::fill(char const* bytes, size_t length, bool synced) {
    assert(exists_ && file_);
    return file_.writeAll(bytes, length) && (!synced || file_.sync()) && file_.close();
}

bool TemporaryFile::renameTo(char const* target) {
    assert(exists_);
    exists_ = rename(name_, target) != 0;
    return !exists_;
}

}  // namespace vobiutils
