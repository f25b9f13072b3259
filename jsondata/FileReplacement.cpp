// Replacing a file as a whole: a temporary file beside it is written, synced and renamed over it,
// and the folder synced.
#include "FileReplacement.h"

#include <stdint.h>
#include <string.h>
#include <sys/stat.h>

#include "FileDescriptor.h"
#include "SaveNames.h"
#include "TemporaryFile.h"

namespace {

struct Content {
    char const* bytes;
    size_t length;
    bool synced;
};

enum class Outcome {
    REPLACED,
    FAILED,
    REFUSED,  // by the folder, not for lack of anything: writing in place may still work
};

Outcome failure() {
    switch (errno) {
        case EACCES:
        case EPERM:
        case EROFS:
        case EBUSY: return Outcome::REFUSED;
        default: return Outcome::FAILED;
    }
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
Outcome putInPlaceOf(struct stat const* old, SaveNames const& names, Content const& content) {
    TemporaryFile temporary(names.temporary);
    if (old != nullptr && holdsAlready(names.target, *old, content)) {
        temporary.removeStale();
        return Outcome::REPLACED;
    }
    if (!temporary.create(old != nullptr ? 0600 : 0644)) {
        return failure();
    }
    if ((old != nullptr && !temporary.takeOwnerAndModeOf(*old)) ||
        !temporary.fill(content.bytes, content.length, content.synced)) {
        return Outcome::FAILED;
    }
    return temporary.renameTo(names.target) ? Outcome::REPLACED : failure();
}

Outcome replace(struct stat const* old, SaveNames const& names, Content const& content) {
    FileDescriptor folder;  // opened first, while a failure can still be reported
    if (content.synced && !folder.open(names.folder, O_RDONLY | O_DIRECTORY)) {
        return failure();
    }
    Outcome const outcome = putInPlaceOf(old, names, content);
    if (folder && outcome == Outcome::REPLACED) {
        folder.sync();  // nobody can take the rename back: it counts as done
    }
    return outcome;
}

// Regular files are locked, so that two writers do not mix; others can be neither cut nor synced.
bool writeDirectly(char const* file, Content const& content) {
    FileDescriptor descriptor(file, O_WRONLY | O_CREAT, 0644);
    struct stat status;
    if (!descriptor || fstat(descriptor.get(), &status) != 0) {
        return false;
    }
    bool const regular = S_ISREG(status.st_mode);
    return (!regular || (descriptor.lock() && ftruncate(descriptor.get(), 0) == 0)) &&
           descriptor.writeAll(content.bytes, content.length) &&
           (!regular || !content.synced || descriptor.sync()) && descriptor.close();
}

// A link below /proc leads to an open file, which may have no name any more.
bool isNameOf(char const* name, struct stat const& file) {
    struct stat status;
    return stat(name, &status) == 0 && status.st_dev == file.st_dev && status.st_ino == file.st_ino;
}

}  // namespace

bool replaceFile(char const* file, char const* bytes, size_t length, Durability durability) {
    Content const content = {bytes, length, durability == Durability::SYNCED};
    struct stat old;
    bool const exists = stat(file, &old) == 0;
    if (!exists && errno != ENOENT) {
        return false;
    }
    if (exists && !S_ISREG(old.st_mode)) {
        return writeDirectly(file, content);
    }
    SaveNames names;
    if (!names.find(file)) {
        return false;
    }
    bool const isLink = strcmp(names.target, file) != 0;
    if (exists && isLink && !isNameOf(names.target, old)) {
        return writeDirectly(file, content);
    }
    Outcome const outcome = replace(exists ? &old : nullptr, names, content);
    return outcome == Outcome::REFUSED ? writeDirectly(names.target, content)
                                       : outcome == Outcome::REPLACED;
}
