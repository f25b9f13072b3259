// The extended attributes of a file that is being replaced, copied to the file that takes its
// place: the access control list, the label of a security module, and users' own.
#pragma once

#include <stddef.h>
#include <stdlib.h>

namespace vobiutils {

class FileAttributes {
  public:
    FileAttributes() = default;
    ~FileAttributes() { free(names_); }
    FileAttributes(FileAttributes const&) = delete;
    FileAttributes& operator=(FileAttributes const&) = delete;

    // Lists the attributes of `file`, a name that must outlive the object. A missing file has none,
    // nor has one on a file system without attributes. False with errno. Works by name, because a
    // file that may be written need not be readable.
    bool list(char const* file);

    // Whether there is an access control list. The group bits of the file's mode are then the
    // list's mask, and do not say what the group may do.
    bool includeAcl() const { return includeAcl_; }

    // Sets them on the open file `to`, which is empty. If the old file has no access control list,
    // the one that `to` has inherited from its directory is removed. To be called before the mode
    // is set.
    //
    // False with errno when the access control list cannot be copied or removed, or when out of
    // space or memory. Any other attribute that cannot be copied is left out, as are those that
    // vouch for the content.
    bool copyTo(int to) const;

  private:
    bool copy(char const* name, int to) const;

    char const* file_ = nullptr;
    char* names_ = nullptr;  // each with its NUL
    size_t length_ = 0;
    bool includeAcl_ = false;
};

}  // namespace vobiutils
