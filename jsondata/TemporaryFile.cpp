#include "TemporaryFile.h"

#include <stdio.h>

TemporaryFile::~TemporaryFile() {
    if (exists_) {
        unlink(name_);  // before the lock ends with the descriptors
    }
}

bool TemporaryFile::create(mode_t mode) {
    while (!exists_) {
        bool const done = file_.open(name_, O_WRONLY | O_CREAT | O_EXCL, mode)
                              ? take()
                              : errno == EEXIST && removeStale();
        if (!done) {
            return false;
        }
    }
    return lock_.duplicate(file_);
}

// Locks the file just made. Another process may have been faster, taken it for one left over, and
// removed it: it then exists no more.
bool TemporaryFile::take() {
    struct stat status;
    if (!file_.lock() || fstat(file_.get(), &status) != 0) {
        unlink(name_);
        return false;
    }
    exists_ = status.st_nlink > 0;
    return true;
}

bool TemporaryFile::removeStale() const {
    FileDescriptor const stale(name_, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    if (!stale) {
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

bool TemporaryFile::takeOwnerAndModeOf(struct stat const& old) {
    if (fchown(file_.get(), old.st_uid, old.st_gid) != 0) {
        // then it is the process's own: not everybody may give files away
    }
    return fchmod(file_.get(), old.st_mode & 07777) == 0;
}

bool TemporaryFile::fill(char const* bytes, size_t length, bool synced) {
    return file_.writeAll(bytes, length) && (!synced || file_.sync()) && file_.close();
}

bool TemporaryFile::renameTo(char const* target) {
    exists_ = rename(name_, target) != 0;
    return !exists_;
}
