// The names used when a file is saved: the target behind symbolic links, its directory, and the
// temporary file.
#pragma once

#include <limits.h>
#include <stddef.h>

namespace vobiutils {

class SaveNames {
  public:
    // Resolves the symbolic links starting at `file` (if `isLink` says that it is one) to the
    // target, which need not exist. False when there are too many links, or a name is too long.
    bool find(char const* file, bool isLink);

    // True when the path went through a link below /proc, such as /proc/self/fd/3: it names an open
    // file, which may no longer have a name of its own.
    bool wentThroughProc() const { return throughProc_; }

    char target[PATH_MAX];         // not a symbolic link
    char folder[PATH_MAX];         // its directory, with a slash at the end
    char temporary[PATH_MAX + 1];  // ".NAME.saving" in it, with space for one more character

  private:
    size_t folderLength() const;
    bool followLink(bool& wasLink);
    bool deriveNames();
    void deriveFolder();

    bool throughProc_ = false;
};

}  // namespace vobiutils
