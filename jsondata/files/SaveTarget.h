// The file that a save replaces: behind symbolic links, with its status.
#pragma once

#include <stddef.h>
#include <sys/stat.h>

#include "jsondata/files/FileDescriptor.h"
#include "jsondata/files/SaveNames.h"

namespace vobiutils {

class SaveTarget {
  public:
    // False if the effective user may not write the file, or what is there cannot be told.
    bool find(char const* file);

    // The status of the file; null if it does not exist.
    struct stat const* status() const {
        return exists_ ? &status_ : nullptr;
    }

    // False for what can only be written in place: what is not a regular file, and what was reached
    // through a link below /proc. Only what is replaceable has names.
    bool isReplaceable() const { return isReplaceable_; }

    // True for a file that is mounted over another one: no rename replaces it.
    bool isMountPoint() const;

    // Whether the file is there and holds these bytes. It is then open in `file`.
    bool holds(char const* bytes, size_t length, FileDescriptor& file) const;

    SaveNames names;

  private:
    bool exists_ = false;
    bool isReplaceable_ = false;
    struct stat status_ = {};
};

}  // namespace vobiutils
