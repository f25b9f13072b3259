// The names of the files under the data directory, each in a buffer inside its FileName object.
#pragma once

#include <stddef.h>

namespace vobiutils {

// "<data directory>/<folder>/<base><suffix>" in at most 255 characters; 7 more for ofDataSchema.
class FileName {
  public:
    static size_t const SIZE = 256;  // with the terminator

    static FileName ofData(unsigned int apiType);
    static FileName ofMessage(unsigned int apiType, unsigned int commType);
    static FileName ofSchema(unsigned int apiType, unsigned int commType);
    // Of the schema of the data file, beside it: fits wherever the name of the data file does.
    static FileName ofDataSchema(unsigned int apiType);

    // Of the empty file that processes lock in turn: fits wherever the name of the data file does.
    static FileName ofLock(unsigned int apiType);

    // Null if the types do not name a file, or the name is too long.
    char const* get() const { return text_[0] != '\0' ? text_ : nullptr; }

  private:
    FileName(char const* folder, char const* base, char const* suffix, size_t size = SIZE);

    static size_t const SCHEMA_SIZE = SIZE + sizeof "_SCHEMA" - 1;

    char text_[SCHEMA_SIZE];
};

}  // namespace vobiutils
