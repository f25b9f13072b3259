// Writes the end of a file before its beginning, so that a full disk does no harm.
#include "jsondata/files/FileOverwrite.h"

#include <stdint.h>
#include <sys/stat.h>

#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

namespace {

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

}  // namespace

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

}  // namespace vobiutils
