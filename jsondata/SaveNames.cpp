#include "SaveNames.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

namespace {

char const TEMPORARY_SUFFIX[] = ".saving";
int const LINKS_FOLLOWED = 40;  // as many as the kernel follows

}  // namespace

bool SaveNames::find(char const* file) {
    size_t const length = strlen(file);
    if (length >= sizeof target) {
        return false;
    }
    memcpy(target, file, length + 1);
    bool wasLink = true;
    for (int links = 0; wasLink; ++links) {
        if (links > LINKS_FOLLOWED || !followLink(wasLink)) {
            return false;
        }
    }
    return nameTheOthers();
}

// With the slash; 0 for a bare name.
size_t SaveNames::folderLength() const {
    char const* const slash = strrchr(target, '/');
    return slash != nullptr ? static_cast<size_t>(slash - target) + 1 : 0;
}

bool SaveNames::followLink(bool& wasLink) {
    char link[PATH_MAX];
    ssize_t const count = readlink(target, link, sizeof link);
    wasLink = count > 0;
    if (!wasLink) {
        return errno == EINVAL || errno == ENOENT;
    }
    size_t const length = static_cast<size_t>(count);
    size_t const start = link[0] == '/' ? 0 : folderLength();
    if (start + length >= sizeof target) {
        return false;
    }
    memcpy(target + start, link, length);
    target[start + length] = '\0';
    return true;
}

bool SaveNames::nameTheOthers() {
    size_t const length = folderLength();
    char const* const path = length > 0 ? target : "./";
    int const pathLength = length > 0 ? static_cast<int>(length) : 2;
    snprintf(folder, sizeof folder, "%.*s", pathLength, path);
    // a long name is cut: two files that share a temporary name take turns
    int const room = NAME_MAX - 1 - static_cast<int>(strlen(TEMPORARY_SUFFIX));
    int const written = snprintf(temporary, sizeof temporary, "%s.%.*s%s", folder, room,
                                 target + length, TEMPORARY_SUFFIX);
    return written > 0 && static_cast<size_t>(written) < sizeof temporary;
}
