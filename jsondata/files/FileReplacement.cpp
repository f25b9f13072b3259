// Replacing a file as a whole: a temporary file beside it is written, synced and renamed over it,
// and the folder synced.
#include "jsondata/files/FileReplacement.h"

#include <stdint.h>
#include <string.h>
#include <sys/stat.h>

#include "jsondata/files/FileAttributes.h"
#include "jsondata/files/FileDescriptor.h"
#include "jsondata/files/SaveNames.h"
#include "jsondata/files/TemporaryFile.h"

namespace vobiutils {

namespace {

struct Content {
    char const* bytes;
    size_t length;
    bool synced;
};

enum class Outcome {
    REPLACED,
    FAILED,
    REFUSED,  // by the folder or its file system, not for lack of anything: writing in place may
              // still work
};

Outcome failure() {
    switch (errno) {
        case EACCES:
        case EPERM:
        case EOPNOTSUPP:
        case EROFS:
        case EBUSY: return Outcome::REFUSED;
        default: return Outcome::FAILED;
    }
}

// Whether the effective user may write the existing file: its folder's permissions, which decide
// on a rename, say nothing of that. A file that has been removed meanwhile does not stop the save.
bool isWritable(char const* file) {
    return faccessat(AT_FDCWD, file, W_OK, AT_EACCESS) == 0 || errno == ENOENT;
}

bool reads(FileDescriptor const& file, Content content) {
    char chunk[4096];
    while (content.length > 0) {
        size_t const wanted = content.length < sizeof chunk ? content.length : sizeof chunk;
        ssize_t const count = file.read(chunk, wanted);
        if (count <= 0 || memcmp(chunk, content.bytes, static_cast<size_t>(count)) != 0) {
            return false;
        }
        content.bytes += count;
        content.length -= static_cast<size_t>(count);
    }
    return true;
}

// Flash wears: what is there already is not written again, only made sure of.
bool holdsAlready(char const* file, struct stat const& status, Content const& content) {
    if (static_cast<uintmax_t>(status.st_size) != content.length) {
        return false;
    }
    FileDescriptor const descriptor(file, O_RDONLY);
    return descriptor && reads(descriptor, content) && (!content.synced || descriptor.sync());
}

// `old` is null for a new file.
Outcome putInPlaceOf(struct stat const* old, SaveNames& names, Content const& content) {
    TemporaryFile temporary(names.temporary);
    if (old != nullptr && holdsAlready(names.target, *old, content)) {
        temporary.removeStale();
        return Outcome::REPLACED;
    }
    FileAttributes attributes;
    if (old != nullptr && !attributes.list(names.target)) {
        return failure();
    }
    // what everybody may read, others may lock from the start
    mode_t const everybody = S_IRUSR | S_IRGRP | S_IROTH;
    bool const isSecret =
        old != nullptr && ((old->st_mode & everybody) != everybody || attributes.includeAcl());
    if (!temporary.create(isSecret ? 0600 : 0644) ||
        (old != nullptr && !temporary.takeAccessOf(*old, attributes))) {
        return failure();
    }
    if (!temporary.fill(content.bytes, content.length, content.synced)) {
        return Outcome::FAILED;
    }
    return temporary.renameTo(names.target) ? Outcome::REPLACED : failure();
}

Outcome replace(struct stat const* old, SaveNames& names, Content const& content) {
    FileDescriptor folder;  // opened first, while a failure can still be reported
    if (content.synced && !folder.open(names.folder, O_RDONLY | O_DIRECTORY) && errno != EACCES) {
        return Outcome::FAILED;  // one that is not to be read may still be written in
    }
    Outcome const outcome = putInPlaceOf(old, names, content);
    if (folder && outcome == Outcome::REPLACED) {
        folder.sync();  // nobody can take the rename back: it counts as done
    }
    return outcome;
}

// What the file lacks in length is written first: on a full disk the old content stays.
bool overwrite(FileDescriptor const& file, off_t oldLength, Content const& content) {
    size_t const kept = static_cast<uintmax_t>(oldLength) < content.length
                            ? static_cast<size_t>(oldLength)
                            : content.length;
    if (!file.seek(oldLength) || !file.writeAll(content.bytes + kept, content.length - kept)) {
        file.resize(oldLength);
        return false;
    }
    return file.seek(0) && file.writeAll(content.bytes, kept) &&
           file.resize(static_cast<off_t>(content.length));
}

// Regular files are locked, so that two writers do not mix; others can be neither cut nor synced.
bool writeDirectly(char const* name, Content const& content) {
    FileDescriptor file(name, O_WRONLY | O_CREAT, 0644);
    struct stat status;
    if (!file || fstat(file.get(), &status) != 0) {
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        return file.writeAll(content.bytes, content.length) && file.close();
    }
    // the length may have changed while this call waited for the lock
    bool const written = file.lock() && fstat(file.get(), &status) == 0 &&
                         overwrite(file, status.st_size, content) &&
                         (!content.synced || file.sync());
    file.unlock();
    return file.close() && written;
}

}  // namespace

bool replaceFile(char const* file, char const* bytes, size_t length, Durability durability) {
    Content const content = {bytes, length, durability == Durability::SYNCED};
    struct stat old;
    bool exists = lstat(file, &old) == 0;
    bool const isLink = exists && S_ISLNK(old.st_mode);
    if (isLink) {
        exists = stat(file, &old) == 0;
    }
    if (exists ? !isWritable(file) : errno != ENOENT) {
        return false;
    }
    if (exists && !S_ISREG(old.st_mode)) {
        return writeDirectly(file, content);
    }
    SaveNames names;
    if (!names.find(file, isLink)) {
        return false;
    }
    if (exists && names.leadsToAnOpenFile()) {
        return writeDirectly(file, content);
    }
    Outcome const outcome = replace(exists ? &old : nullptr, names, content);
    return outcome == Outcome::REFUSED ? writeDirectly(names.target, content)
                                       : outcome == Outcome::REPLACED;
}

}  // namespace vobiutils
