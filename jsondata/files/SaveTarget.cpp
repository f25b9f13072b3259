// Looks at a file before it is replaced.
#include "jsondata/files/SaveTarget.h"

#include <stdint.h>
#include <string.h>

namespace vobiutils {

namespace {

// Whether the effective user may write the existing file. A rename only needs permission to write
// the directory. A file that has been removed meanwhile does not stop the save.
bool isWritable(char const* file) {
    return faccessat(AT_FDCWD, file, W_OK, AT_EACCESS) == 0 || errno == ENOENT;
}

bool reads(FileDescriptor const& file, char const* bytes, size_t length) {
    char chunk[4096];
    while (length > 0) {
        size_t const wanted = length < sizeof chunk ? length : sizeof chunk;
        ssize_t const count = file.read(chunk, wanted);
        if (count <= 0 || memcmp(chunk, bytes, static_cast<size_t>(count)) != 0) {
            return false;
        }
        bytes += count;
        length -= static_cast<size_t>(count);
    }
    return true;
}

// The number of the mount that a file belongs to, 0 where the system does not tell. No handle is
// asked for, but the number comes with the refusal.
int mountOf(char const* file) {
    struct file_handle none = {};
    int mount = 0;
    name_to_handle_at(AT_FDCWD, file, &none, &mount, 0);
    return mount;
}

}  // namespace

bool SaveTarget::find(char const* file) {
    exists_ = lstat(file, &status_) == 0;
    bool const isLink = exists_ && S_ISLNK(status_.st_mode);
    if (isLink) {
        exists_ = stat(file, &status_) == 0;
    }
    if (exists_ ? !isWritable(file) : errno != ENOENT) {
        return false;
    }
    if (exists_ && !S_ISREG(status_.st_mode)) {
        return true;
    }
    isReplaceable_ = names.find(file, isLink);
    bool const isFound = isReplaceable_;
    isReplaceable_ = isFound && !(exists_ && names.wentThroughProc());
    return isFound;
}

bool SaveTarget::isMountPoint() const {
    return exists_ && mountOf(names.target) != mountOf(names.folder);
}

bool SaveTarget::holds(char const* bytes, size_t length, FileDescriptor& file) const {
    return exists_ && static_cast<uintmax_t>(status_.st_size) == length &&
           file.open(names.target, O_RDONLY) && reads(file, bytes, length);
}

}  // namespace vobiutils
