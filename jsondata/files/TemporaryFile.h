// A new file on its way to its name: made beside it, filled, and renamed to it, or removed again.
//
// The temporary name is always the same for one file, so that a process that is killed leaves one
// temporary file at most, which the next save removes. Whoever works on it holds its lock until it
// has its final name: one whose lock is free was left over. Only who holds the lock renames or
// removes it. What stands there and cannot be locked or removed, another user's or no file at all,
// is left alone: a further name is taken, with a digit behind.
#ifndef VOBIUTILS_JSONDATA_FILES_TEMPORARYFILE_H
#define VOBIUTILS_JSONDATA_FILES_TEMPORARYFILE_H

#include <string.h>
#include <sys/stat.h>

#include "jsondata/files/FileAttributes.h"
#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

class TemporaryFile {
  public:
    // `name` has room for one more character, and must outlive the object.
    explicit TemporaryFile(char* name) : name_(name), firstLength_(strlen(name)) {}
    ~TemporaryFile();
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    // A new, empty file. Waits for whoever else works on it. False with errno.
    bool create(mode_t mode);

    // Takes the owner (where that is allowed), the attributes and the mode of the file it is to
    // replace. Before anything is written: the content may be secret. False with errno.
    bool takeAccessOf(struct stat const& old, FileAttributes const& attributes);

    // Writes all of the file and closes it, every step checked.
    bool fill(char const* bytes, size_t length, bool synced);

    // False with errno.
    bool renameTo(char const* target);

    // Removes what a process that was killed left at that name. Waits for one that still works on
    // it.
    bool removeStale() const;

  private:
    bool take();
    bool turnToNextName();

    char* const name_;
    size_t const firstLength_;  // of the name without a digit
    char digit_ = '0';
    bool exists_ = false;
    struct stat made_;  // the status of the new file
    FileDescriptor file_;
    FileDescriptor lock_;  // keeps the lock when file_ is closed
};

}  // namespace vobiutils

#endif
