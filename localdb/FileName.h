// The names of the files under the data directory, each in a buffer inside its FileName object.
#ifndef VOBIUTILS_LOCALDB_FILENAME_H
#define VOBIUTILS_LOCALDB_FILENAME_H

#include <stddef.h>

namespace vobiutils {

// "<data directory>/<folder>/<base><suffix>" in at most 255 characters.
class FileName {
  public:
    static size_t const SIZE = 256;  // with the terminator

    static FileName ofData(unsigned int apiType);
    static FileName ofMessage(unsigned int apiType, unsigned int commType);
    static FileName ofSchema(unsigned int apiType, unsigned int commType);

    // Null if the types do not name a file, or the name is too long.
    char const* get() const { return text_[0] != '\0' ? text_ : nullptr; }

  private:
    FileName(char const* folder, char const* base, char const* suffix);

    char text_[SIZE];
};

}  // namespace vobiutils

#endif
