// Lists and copies extended attributes.
#include "jsondata/files/FileAttributes.h"

#include <errno.h>
#include <string.h>
#include <sys/types.h>
#include <sys/xattr.h>

namespace vobiutils {

namespace {

char const ACL[] = "system.posix_acl_access";

// Signatures and capabilities that hold for the old content only.
bool vouchesForTheContent(char const* name) {
    return strcmp(name, "security.ima") == 0 || strcmp(name, "security.evm") == 0 ||
           strcmp(name, "security.capability") == 0;
}

bool isForLackOfSpace() { return errno == ENOSPC || errno == EDQUOT || errno == ENOMEM; }

// After a failed call: whether there was no attribute to be found.
bool isForLackOfAttributes() {
    return errno == ENODATA || errno == EOPNOTSUPP || errno == ENOSYS || errno == ENOENT;
}

// The attribute `name` of the file, or the names of all attributes for a null one. Results as
// getxattr.
ssize_t get(char const* file, char const* name, char* bytes, size_t size) {
    return name != nullptr ? lgetxattr(file, name, bytes, size) : llistxattr(file, bytes, size);
}

// The same, in memory that the caller frees (null if there is nothing); the system limits it to 64
// KiB. The length, or -1 with errno.
ssize_t getAll(char const* file, char const* name, char*& bytes) {
    bytes = nullptr;
    ssize_t const size = get(file, name, nullptr, 0);
    if (size <= 0) {
        return size;
    }
    bytes = static_cast<char*>(malloc(static_cast<size_t>(size)));
    return bytes != nullptr ? get(file, name, bytes, static_cast<size_t>(size)) : -1;
}

bool removeAcl(int file) {
    return fgetxattr(file, ACL, nullptr, 0) < 0 ? isForLackOfAttributes()
                                                : fremovexattr(file, ACL) == 0;
}

}  // namespace

bool FileAttributes::list(char const* file) {
    file_ = file;
    ssize_t const length = getAll(file, nullptr, names_);
    if (length < 0) {
        return isForLackOfAttributes();
    }
    length_ = static_cast<size_t>(length);
    for (size_t at = 0; at < length_; at += strlen(names_ + at) + 1) {
        includeAcl_ = includeAcl_ || strcmp(names_ + at, ACL) == 0;
    }
    return true;
}

bool FileAttributes::copyTo(int to) const {
    for (size_t at = 0; at < length_; at += strlen(names_ + at) + 1) {
        char const* const name = names_ + at;
        bool const isToBeCopied = strcmp(name, ACL) != 0 && !vouchesForTheContent(name);
        if (isToBeCopied && !copy(name, to) && isForLackOfSpace()) {
            return false;
        }
    }
    return includeAcl_ ? copy(ACL, to) : removeAcl(to);  // last: it may forbid writing the others
}

bool FileAttributes::copy(char const* name, int to) const {
    char* value = nullptr;
    ssize_t const length = getAll(file_, name, value);
    bool const isCopied =
        length >= 0 && fsetxattr(to, name, value, static_cast<size_t>(length), 0) == 0;
    int const error = errno;
    free(value);
    errno = error;
    return isCopied;
}

}  // namespace vobiutils
