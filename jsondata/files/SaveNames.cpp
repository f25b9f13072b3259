// Follows symbolic links by hand, and forms the names.
#include "jsondata/files/SaveNames.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace vobiutils {

namespace {

char const TEMPORARY_SUFFIX[] = ".saving";
int const LINKS_FOLLOWED = 40;  // as many as the kernel follows
long const PROC_FILE_SYSTEM = 0x9fa0;

}  // namespace

bool SaveNames::find(char const* file, bool isLink) {
    size_t const length = strlen(file);
    if (length >= sizeof target) {
        return false;
    }
    memcpy(target, file, length + 1);
    for (int links = 0; isLink; ++links) {
        if (links > LINKS_FOLLOWED || !followLink(isLink)) {
            return false;
        }
    }
    return deriveNames();
}

// The length of the directory in `target`, with the slash; 0 for a bare name.
size_t SaveNames::folderLength() const {
    char const* const slash = strrchr(target, '/');
    return slash != nullptr ? static_cast<size_t>(slash - target) + 1 : 0;
}

// Replaces `target` by what it points to. Ordinarily that is all of the link; a relative one is
// relative to the directory of the link:
//
//   target  "/etc/app/settings"    link  "../data/settings.ldb"
//   becomes "/etc/app/../data/settings.ldb"
//
// `wasLink` becomes false when `target` is not a link, which ends the search.
bool SaveNames::followLink(bool& wasLink) {
    char link[PATH_MAX];
    ssize_t const count = readlink(target, link, sizeof link);
    wasLink = count > 0;
    if (!wasLink) {
        return errno == EINVAL || errno == ENOENT;
    }
    deriveFolder();
    struct statfs system;
    if (statfs(folder, &system) != 0) {
        return false;
    }
    throughProc_ = throughProc_ || system.f_type == PROC_FILE_SYSTEM;
    size_t const length = static_cast<size_t>(count);
    size_t const start = link[0] == '/' ? 0 : folderLength();
    if (start + length >= sizeof target) {
        return false;
    }
    memcpy(target + start, link, length);
    target[start + length] = '\0';
    return true;
}

void SaveNames::deriveFolder() {
    size_t const length = folderLength();
    char const* const path = length > 0 ? target : "./";
    int const pathLength = length > 0 ? static_cast<int>(length) : 2;
    snprintf(folder, sizeof folder, "%.*s", pathLength, path);
}

bool SaveNames::deriveNames() {
    deriveFolder();
    // a long name is cut; two files with the same temporary name then wait for each other
    int const space = NAME_MAX - 2 - static_cast<int>(strlen(TEMPORARY_SUFFIX));
    size_t const size = sizeof temporary - 1;
    int const written = snprintf(temporary, size, "%s.%.*s%s", folder, space,
                                 target + folderLength(), TEMPORARY_SUFFIX);
    return written > 0 && static_cast<size_t>(written) < size;
}

}  // namespace vobiutils
