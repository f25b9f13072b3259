// Finishes changes: after a kill or a loss of power, and as the last part of every change.
//
// The same steps serve for both. They may be interrupted anywhere, and begun again:
//
//   1. Sync the folder, so that the record outlasts whatever is renamed.
//   2. See what each file is: old and its new content there, new, or another one, saved since.
//      If a file is old and its new content is gone, the change never counted, and is removed.
//   3. Rename the new content to each file that is old.
//   4. Sync the folder of each file, so that the record is emptied after that.
//   5. Empty the record.
//   6. Sync the empty record, and remove it.
//
// A change itself ends with step 5. After a loss of power the record may be whole again: it finds
// every file new. But if one was saved meanwhile, and had its old content again, it would be taken
// for old. So the next lock, read or save begins with step 6.
#include "jsondata/files/ChangeFolder.h"

#include <assert.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "jsondata/files/FileBytes.h"
#include "jsondata/files/FileOverwrite.h"
#include "jsondata/files/SaveTarget.h"

namespace vobiutils {

namespace {

char const RECORD[] = ".change";
char const NEW_RECORD[] = ".change.new";
char const LOCK[] = ".change.lock";

bool isRefusal(int error) { return error == EACCES || error == EPERM || error == EROFS; }

// Reads the record, or returns why there is none: NONE also for an empty one.
ChangeState read(char const* name, ChangeRecord& record) {
    FileDescriptor const file(name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!file) {
        return errno == ENOENT  ? ChangeState::NONE
               : errno == ELOOP ? ChangeState::DAMAGED
                                : ChangeState::UNFINISHED;
    }
    struct stat status;
    char text[ChangeRecord::SIZE];
    ssize_t const length = file.readFully(text, sizeof text);
    if (fstat(file.get(), &status) != 0 || (length < 0 && errno != EISDIR)) {
        return ChangeState::UNFINISHED;
    }
    if (length < 0 || !S_ISREG(status.st_mode) || length == sizeof text) {
        return ChangeState::DAMAGED;
    }
    text[length] = '\0';
    bool const isWhole = strlen(text) == static_cast<size_t>(length) && record.parse(text);
    return isWhole || length == 0 ? ChangeState::NONE : ChangeState::DAMAGED;
}

}  // namespace

NameBelow::NameBelow(char const* folder, char const* name, int number) {
    // a zero without digits prints as nothing
    int const length = snprintf(text_, sizeof text_, "%s/%s%.0d", folder, name, number);
    if (length < 0 || static_cast<size_t>(length) >= sizeof text_) {
        text_[0] = '\0';
    }
}

ChangeFolder::~ChangeFolder() {
    if (lock_) {
        lock_.unlock();
    }
}

NameBelow ChangeFolder::record() const { return NameBelow(path_, RECORD); }

bool ChangeFolder::isMarked() const { return faccessat(AT_FDCWD, record(), F_OK, 0) == 0; }

bool ChangeFolder::isRecorded() const {
    if (!isMarked()) {
        return false;
    }
    ChangeRecord change;
    ChangeState const state = read(record(), change);
    return state == ChangeState::UNFINISHED || (state == ChangeState::NONE && change.count() > 0);
}

ChangeState ChangeFolder::lock(bool waits) {
    if (faccessat(AT_FDCWD, path_, W_OK | X_OK, AT_EACCESS) != 0 && isRefusal(errno)) {
        return ChangeState::NOT_PERMITTED;
    }
    if (!lock_.open(NameBelow(path_, LOCK), O_RDONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK, 0644)) {
        return isRefusal(errno) ? ChangeState::NOT_PERMITTED : ChangeState::UNFINISHED;
    }
    if (waits ? lock_.lock() : lock_.tryLock()) {
        return ChangeState::NONE;
    }
    return errno == EWOULDBLOCK ? ChangeState::BUSY : ChangeState::UNFINISHED;
}

bool ChangeFolder::mark() const {
    FileDescriptor const empty(record(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    return static_cast<bool>(empty);
}

bool ChangeFolder::store(ChangeRecord const& change) const {
    assert(lock_);
    NameBelow const name(path_, NEW_RECORD);
    unlink(name);  // a leftover
    char text[ChangeRecord::SIZE];
    size_t const length = change.print(text);
    FileDescriptor file(name, O_WRONLY | O_CREAT | O_EXCL, 0644);
    return file && file.writeAll(text, length) && file.sync() && file.close() &&
           rename(name, record()) == 0;
}

void ChangeFolder::removeTexts() const {
    for (int i = 0; i < ChangeRecord::MOST; ++i) {
        unlink(text(i));
    }
    unlink(NameBelow(path_, NEW_RECORD));
}

void ChangeFolder::removeMark() const { unlink(record()); }

// What the record said cannot come back.
bool ChangeFolder::removeEmptied() const {
    FileDescriptor emptied;
    bool const isThere = emptied.open(record(), O_RDONLY | O_NOFOLLOW);
    if (isThere ? !emptied.sync() : errno != ENOENT) {
        return false;
    }
    removeMark();
    return true;
}

bool ChangeFolder::isEmpty() const {
    struct stat status;
    return stat(record(), &status) == 0 && status.st_size == 0;
}

// One attempt to finish the change of a record.
struct ChangeFolder::Finish {
    enum FileState { OLD, NEW, OTHER, LOST };

    bool run();
    bool survey();
    bool survey(int i);
    bool carryOut();
    bool replace(int i);
    bool write(int i, char const* target);
    bool syncFolderOf(int i);
    NameBelow nameOf(int i) { return NameBelow(changes.path_, record[i].name); }

    ChangeFolder const& changes;
    ChangeRecord& record;
    FileDescriptor folder;
    FileState states[ChangeRecord::MOST];
    bool counts = true;
};

bool ChangeFolder::Finish::run() {
    assert(changes.lock_);
    if (!folder.open(changes.path_, O_RDONLY | O_DIRECTORY) || !folder.sync() || !survey() ||
        (counts && !carryOut())) {
        return false;
    }
    changes.removeTexts();
    FileDescriptor const emptied(changes.record(), O_WRONLY | O_NOFOLLOW);
    return emptied && emptied.resize(0);
}

bool ChangeFolder::Finish::survey() {
    for (int i = 0; i < record.count(); ++i) {
        if (!survey(i)) {
            return false;
        }
        counts = counts && states[i] != LOST;
    }
    return true;
}

bool ChangeFolder::Finish::survey(int i) {
    ChangeRecord::File const& file = record[i];
    uint64_t version = 0;
    states[i] = OTHER;
    if (!readVersion(nameOf(i), version)) {
        return errno == EINVAL;
    }
    bool const isNew = version == file.gets;
    if (isNew && !file.isInPlace) {
        states[i] = NEW;
    } else if (version == file.had ||
               file.isInPlace) {  // what was written in place may be unsynced
        if (!readVersion(changes.text(i), version)) {
            return false;
        }
        states[i] = version == file.gets ? OLD : isNew ? NEW : LOST;
    }
    return true;
}

bool ChangeFolder::Finish::carryOut() {
    for (int i = 0; i < record.count(); ++i) {
        if (states[i] == OLD && !replace(i)) {
            return false;
        }
    }
    for (int i = 0; i < record.count(); ++i) {
        if (states[i] != OTHER && !syncFolderOf(i)) {
            return false;
        }
    }
    return true;
}

bool ChangeFolder::Finish::replace(int i) {
    SaveTarget target;
    return target.find(nameOf(i)) && target.isReplaceable() &&
           (rename(changes.text(i), target.names.target) == 0 || write(i, target.names.target));
}

// What the rename is refused for is written in place. The record says so first: if that is
// interrupted, the file is neither old nor new.
bool ChangeFolder::Finish::write(int i, char const* target) {
    if (!record[i].isInPlace) {
        record[i].isInPlace = true;
        if (!changes.store(record) || !folder.sync()) {
            return false;
        }
    }
    FileDescriptor const text(changes.text(i), O_RDONLY);
    FileBytes bytes;
    return text && bytes.append(text) == 0 &&
           writeInPlace(target, {bytes.data(), bytes.length(), true});
}

bool ChangeFolder::Finish::syncFolderOf(int i) {
    SaveTarget target;
    if (!target.find(nameOf(i))) {
        return false;
    }
    FileDescriptor const of(target.names.folder, O_RDONLY | O_DIRECTORY);
    return of && of.sync();
}

ChangeState ChangeFolder::carryOut() const {
    ChangeRecord change;
    ChangeState const state = read(record(), change);
    if (state != ChangeState::NONE) {
        return state;
    }
    if (change.count() == 0) {
        removeTexts();
        return ChangeState::NONE;
    }
    Finish attempt = {*this, change, {}, {}};
    return attempt.run() ? ChangeState::NONE : ChangeState::UNFINISHED;
}

ChangeState ChangeFolder::finish() const {
    ChangeState const state = carryOut();
    return state == ChangeState::NONE && !removeEmptied() ? ChangeState::UNFINISHED : state;
}

}  // namespace vobiutils
