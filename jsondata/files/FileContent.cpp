// Reads a file, again if it changes meanwhile.
#include "jsondata/files/FileContent.h"

#include <assert.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>

namespace vobiutils {

int FileContent::read(char const* name) {
    assert(!file);
    if (!file.open(name, O_RDONLY)) {
        return errno;
    }
    int const attempts = 3;
    int error = readOnce();
    for (int i = 1; i < attempts && error == 0 && !isSettled && file.seek(0); ++i) {
        bytes.clear();
        error = readOnce();
    }
    return error;
}

int FileContent::readOnce() {
    timespec now;
    struct stat before;
    struct stat after;
    clock_gettime(CLOCK_REALTIME, &now);
    if (fstat(file.get(), &before) != 0) {
        return errno;
    }
    assert(bytes.length() == 0);
    int const error = bytes.append(file, before.st_size);
    if (error != 0) {
        return error;
    }
    if (fstat(file.get(), &after) != 0) {
        return errno;
    }
    identity = FileIdentity(before);
    isRecent = identity.isRecentAt(now);
    isSettled = S_ISREG(before.st_mode) && identity == FileIdentity(after);
    return 0;
}

}  // namespace vobiutils
