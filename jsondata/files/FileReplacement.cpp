// Replaces a file as a whole, by writing another one and renaming it:
//
//   1. Refuse a file that the effective user may not write (SaveTarget::find).
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
// What cannot be replaced is written in place (FileOverwrite.h): what is not a regular file, what was
// reached through a link below /proc, and what the directory or its file system refuses in step 5,
// 6 or 8.
//
// Not promised:
//
//   - Whole content of a file that is written in place, if a kill, a loss of power or a failed write
//     comes between. Only a full disk is guarded against.
//   - The new content after a loss of power, if step 9 fails. The rename cannot be undone, so the
//     file counts as replaced; the loss of power may bring back the old content.
//   - Any content after a loss of power without Durability::SYNCED: the file may then be empty.
//   - A lock against other programs. Only writers that call replaceFile wait for one another.
#include "jsondata/files/FileReplacement.h"

#include "jsondata/files/FileAttributes.h"
#include "jsondata/files/FileDescriptor.h"
#include "jsondata/files/FileOverwrite.h"
#include "jsondata/files/TemporaryFile.h"

namespace vobiutils {

namespace {

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

// Flash wears out: identical content is not rewritten, only synced.
bool holdsAlready(SaveTarget const& target, Content const& content) {
    FileDescriptor file;
    return target.holds(content.bytes, content.length, file) && (!content.synced || file.sync());
}

// Steps 5 to 7.
Outcome make(TemporaryFile& temporary, SaveTarget const& target, Content const& content) {
    struct stat const* const old = target.status();
    FileAttributes attributes;
    if (old != nullptr && !attributes.list(target.names.target)) {
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
    return temporary.fill(content.bytes, content.length, content.synced) ? Outcome::REPLACED
                                                                         : Outcome::FAILED;
}

// Steps 4 to 8.
Outcome renameOver(SaveTarget& target, Content const& content) {
    TemporaryFile temporary(target.names.temporary);
    if (holdsAlready(target, content)) {
        temporary.removeStale();
        return Outcome::REPLACED;
    }
    Outcome const outcome = make(temporary, target, content);
    if (outcome != Outcome::REPLACED) {
        return outcome;
    }
    return temporary.renameTo(target.names.target) ? Outcome::REPLACED : failure();
}

// Steps 3 to 9.
Outcome replace(SaveTarget& target, Content const& content) {
    FileDescriptor folder;  // opened first, while a failure can still be reported
    if (content.synced && !folder.open(target.names.folder, O_RDONLY | O_DIRECTORY) &&
        errno != EACCES) {
        return Outcome::FAILED;  // EACCES: a directory we may not read may still be writable
    }
    Outcome const outcome = renameOver(target, content);
    if (folder && outcome == Outcome::REPLACED) {
        folder.sync();  // the rename cannot be undone, so a failed sync still counts as replaced
    }
    return outcome;
}

}  // namespace

bool replaceFile(char const* file, char const* bytes, size_t length, Durability durability) {
    Content const content = {bytes, length, durability == Durability::SYNCED};
    SaveTarget target;
    if (!target.find(file)) {
        return false;
    }
    if (!target.isReplaceable()) {
        return writeInPlace(file, content);
    }
    Outcome const outcome = replace(target, content);
    return outcome == Outcome::REFUSED ? writeInPlace(target.names.target, content)
                                       : outcome == Outcome::REPLACED;
}

bool prepareReplacement(SaveTarget& target, char const* bytes, size_t length, char const* text) {
    FileDescriptor const folder(target.names.folder, O_RDONLY | O_DIRECTORY);
    TemporaryFile temporary(target.names.temporary);
    return target.isReplaceable() && !target.isMountPoint() && folder &&
           make(temporary, target, {bytes, length, true}) == Outcome::REPLACED &&
           temporary.renameTo(text);
}

}  // namespace vobiutils
