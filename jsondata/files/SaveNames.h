// The names that saving a file works with.
#ifndef VOBIUTILS_JSONDATA_FILES_SAVENAMES_H
#define VOBIUTILS_JSONDATA_FILES_SAVENAMES_H

#include <limits.h>
#include <stddef.h>

namespace vobiutils {

class SaveNames {
  public:
    // Finds the file, there or not, behind the symbolic links that begin at `file` if it is one.
    // False when there is no end to them, or a name is too long.
    bool find(char const* file, bool isLink);

    // A link of the system's own, below /proc, leads to an open file; whether that still has a name
    // is not to be known.
    bool leadsToAnOpenFile() const { return throughProc_; }

    char target[PATH_MAX];         // no symbolic link
    char folder[PATH_MAX];         // where it stands
    char temporary[PATH_MAX + 1];  // ".<name>.saving" beside it, with room for one more character

  private:
    size_t folderLength() const;
    bool followLink(bool& wasLink);
    bool nameTheOthers();
    void nameFolder();

    bool throughProc_ = false;
};

}  // namespace vobiutils

#endif
