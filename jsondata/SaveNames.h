// The names that saving a file works with.
#ifndef VOBIUTILS_JSONDATA_SAVENAMES_H
#define VOBIUTILS_JSONDATA_SAVENAMES_H

#include <limits.h>
#include <stddef.h>

class SaveNames {
  public:
    // Finds the file behind the symbolic links at `file`, there or not. False when there is no end
    // to them, or a name is too long.
    bool find(char const* file);

    char target[PATH_MAX];     // no symbolic link
    char folder[PATH_MAX];     // where it stands
    char temporary[PATH_MAX];  // ".<name>.saving" beside it

  private:
    size_t folderLength() const;
    bool followLink(bool& wasLink);
    bool nameTheOthers();
};

#endif
