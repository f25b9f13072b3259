// Replacing the content of a file as a whole. Where its folder allows it, the file holds the old
// content or the new one at any instant, and after a loss of power at any instant.
#ifndef VOBIUTILS_JSONDATA_FILES_FILEREPLACEMENT_H
#define VOBIUTILS_JSONDATA_FILES_FILEREPLACEMENT_H

#include <stddef.h>

namespace vobiutils {

// Whether the new content has to outlive a loss of power from the moment of success on.
enum class Durability { SYNCED, UNSYNCED };

// Makes `file` hold `bytes` and nothing else. True when it does; on failure it is as it was, and
// nothing is left beside it. It fails for a file that the effective user may not write, even where
// its folder would let it be replaced, and where it holds the bytes already.
//
// The permission bits, the access control list, the owner (where that is allowed), the extended
// attributes that can be copied and symbolic links stay; a new file gets mode 0644 less the umask.
// What is there and is no regular file is written directly. So is, without any promise for a write
// that fails, a file whose folder allows no replacement, or whose file system does not let a new
// one have its access control list or mode.
//
// May be called from any number of threads and processes at once: the last one wins, whole.
bool replaceFile(char const* file, char const* bytes, size_t length, Durability durability);

}  // namespace vobiutils

#endif
