// The extended attributes of a file that is to be replaced, for the file that takes its place: its
// access control list, the label of a security module, and what users have noted.
#ifndef VOBIUTILS_JSONDATA_FILES_FILEATTRIBUTES_H
#define VOBIUTILS_JSONDATA_FILES_FILEATTRIBUTES_H

#include <stddef.h>
#include <stdlib.h>

namespace vobiutils {

class FileAttributes {
  public:
    FileAttributes() = default;
    ~FileAttributes() { free(names_); }
    FileAttributes(FileAttributes const&) = delete;
    FileAttributes& operator=(FileAttributes const&) = delete;

    // Lists the attributes of `file`, which must outlive the object. A missing file has none, and
    // so has one on a file system without attributes. False with errno. By name, because a file
    // that may be written need not be readable.
    bool list(char const* file);

    // Whether there is an access control list. The group bits of the file's mode are then its mask:
    // they say nothing about what the group may do.
    bool includeAcl() const { return includeAcl_; }

    // Gives them to the open file `to`, which is empty, and takes an access control list from it
    // that it has from its folder when the old file has none. The mode follows the list.
    //
    // False with errno when the list cannot be kept, or when there is no space or no memory. Any
    // other attribute that cannot be copied is left out, and so are those that vouch for the
    // content.
    bool copyTo(int to) const;

  private:
    bool copy(char const* name, int to) const;

    char const* file_ = nullptr;
    char* names_ = nullptr;  // each with its NUL
    size_t length_ = 0;
    bool includeAcl_ = false;
};

}  // namespace vobiutils

#endif
