// Replaces a file as a whole, by writing another one and renaming it:
//
//   1. Refuse a file that the effective user may not write (isWritable).
//   2. Follow symbolic links to the target, and form the names in its directory (SaveNames).
//   3. Open the directory, so that it can be synced in step 9 (replace).
//   4. If the target holds the content already, sync it, and end here (holdsAlready).
//   5. Create ".NAME.saving" beside the target, and lock it (TemporaryFile::create).
//   6. Give it the target's owner, attributes and mode while it is empty (takeAccessOf).
//   7. Write the content, sync, and close (fill).
//   8. Rename it to the target (renameTo). Up to here, a failure leaves the old content; from here
//      on, every reader finds the new one.
//   9. Sync the directory, so that the rename survives a loss of power.
//
// Without Durability::SYNCED, steps 3 and 9 and the syncs in steps 4 and 7 are left out.
//
// What cannot be replaced is written in place (writeInPlace): what is not a regular file, what was
// reached through a link below /proc, and what the directory or its file system refuses in step 5,
// 6 or 8.
//
// Not promised:
//
//   - Whole content of a file that is written in place, if a kill, a loss of power or a failed write
//     comes between. Only a full disk is guarded against (overwrite).
//   - The new content after a loss of power, if step 9 fails. The rename cannot be undone, so the
//     file counts as replaced; the loss of power may bring back the old content.
//   - Any content after a loss of power without Durability::SYNCED: the file may then be empty.
//   - A lock against other programs. Only writers that call replaceFile wait for one another.
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
    REFUSED,  // by the directory or its file system: writing in place may still work
};

// What errno says of a step that failed. Want of space, memory or descriptors would also make
// writing in place fail.
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

// Whether the effective user may write the existing file. A rename only needs permission to write
// the directory. A file that has been removed meanwhile does not stop the save.
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

// Flash wears out: identical content is not rewritten, only synced.
bool holdsAlready(char const* file, struct stat const& status, Content const& content) {
    if (static_cast<uintmax_t>(status.st_size) != content.length) {
        return false;
    }
    FileDescriptor const descriptor(file, O_RDONLY);
    return descriptor && reads(descriptor, content) && (!content.synced || descriptor.sync());
}

// Steps 4 to 8. `old` is the status of the target, null when it does not exist.
Outcome renameOver(struct stat const* old, SaveNames& names, Content const& content) {
    TemporaryFile temporary(names.temporary);
    if (old != nullptr && holdsAlready(names.target, *old, content)) {
        temporary.removeStale();
        return Outcome::REPLACED;
    }
    FileAttributes attributes;
    if (old != nullptr && !attributes.list(names.target)) {
        return failure();
    }
    // Ordinarily the new file is world-readable from the start: another user's process must be able
    // to open it in order to lock it. It is not when the target is not.
    mode_t const everyone = S_IRUSR | S_IRGRP | S_IROTH;
    bool const isSecret =
        old != nullptr && ((old->st_mode & everyone) != everyone || attributes.includeAcl());
    if (!temporary.create(isSecret ? 0600 : 0644) ||
        (old != nullptr && !temporary.takeAccessOf(*old, attributes))) {
        return failure();
    }
    if (!temporary.fill(content.bytes, content.length, content.synced)) {
        return Outcome::FAILED;
    }
    return temporary.renameTo(names.target) ? Outcome::REPLACED : failure();
}

// Steps 3 to 9.
Outcome replace(struct stat const* old, SaveNames& names, Content const& content) {
    FileDescriptor folder;  // opened first, while a failure can still be reported
    if (content.synced && !folder.open(names.folder, O_RDONLY | O_DIRECTORY) && errno != EACCES) {
        return Outcome::FAILED;  // EACCES: a directory we may not read may still be writable
    }
    Outcome const outcome = renameOver(old, names, content);
    if (folder && outcome == Outcome::REPLACED) {
        folder.sync();  // the rename cannot be undone, so a failed sync still counts as replaced
    }
    return outcome;
}

// Writes the part beyond the old length first: if the disk is full, the old content is still
// intact.
//
//   old content       aaaa
//   1. the end        aaaaBBB    on failure cut back to aaaa
//   2. the beginning  BBBBBBB
//   3. the length     cut, if the new content is shorter
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

// A regular file is locked, so that two writers do not mix. Others can be neither cut nor synced.
bool writeInPlace(char const* name, Content const& content) {
    FileDescriptor file(name, O_WRONLY | O_CREAT, 0644);
    struct stat status;
    if (!file || fstat(file.get(), &status) != 0) {
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        return file.writeAll(content.bytes, content.length) && file.close();
    }
    // the length is read again: it may have changed while this call waited for the lock
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
        return writeInPlace(file, content);
    }
    SaveNames names;
    if (!names.find(file, isLink)) {
        return false;
    }
    if (exists && names.wentThroughProc()) {
        return writeInPlace(file, content);
    }
    Outcome const outcome = replace(exists ? &old : nullptr, names, content);
    return outcome == Outcome::REFUSED ? writeInPlace(names.target, content)
                                       : outcome == Outcome::REPLACED;
}

}  // namespace vobiutils
