// A temporary file: created beside the target, filled, and renamed to it, or removed again.
//
// The temporary name is derived from the target's name alone, so a killed process leaves at most
// one stray file, and the next save removes it. The writer holds the file's lock until the rename;
// a file whose lock is free is a leftover. Only the lock holder may rename or remove it. If
// something at that name can be neither locked nor removed (another user's file, a directory), it
// is left alone and a digit is appended to the name.
#pragma once

#include <string.h>
#include <sys/stat.h>

#include "jsondata/files/FileAttributes.h"
#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

class TemporaryFile {
  public:
    // `name` has space for one more character, and must outlive the object.
    explicit TemporaryFile(char* name) : name_(name), firstLength_(strlen(name)) {}
    ~TemporaryFile();
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    // Creates the file, empty, and locks it. Blocks while another writer holds the file of that
    // name. False with errno.
    bool create(mode_t mode);

    // Sets the owner (where that is permitted), the attributes and the mode to those of the file to
    // be replaced. To be called before anything is written: the content may be secret. False with
    // errno.
    bool takeAccessOf(struct stat const& old, FileAttributes const& attributes);

    // Writes all of the file and closes it. False when any step fails.
    bool fill(char const* bytes, size_t length, bool synced);

    // False with errno.
    bool renameTo(char const* target);

    // Removes what a killed process left at that name. Blocks while another writer holds it. False
    // with errno when it can be neither locked nor removed.
    bool removeStale() const;

  private:
    bool lockNew();
    bool turnToNextName();

    char* const name_;
    size_t const firstLength_;  // of the name without the digit
    char digit_ = '0';
    bool exists_ = false;  // the file was created and is locked, and has not been renamed
    struct stat made_;     // the status of the new file
    FileDescriptor file_;
    FileDescriptor lock_;  // shares the lock, and keeps it when file_ is closed
};

}  // namespace vobiutils
