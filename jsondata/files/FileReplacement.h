// Replaces the content of a file as a whole: at any instant a reader finds the old content or the new
// one, not a mixture. If the new content is synced, so does a reader after a loss of power.
#pragma once

#include <stddef.h>

#include "jsondata/files/SaveTarget.h"

namespace vobiutils {

// Whether the new content has to survive a loss of power from the moment of success on.
enum class Durability { SYNCED, UNSYNCED };

// Makes `file` hold `bytes` and nothing else. True when it does; on failure the file is as it was,
// and nothing is left beside it. Fails for a file that the effective user may not write, even where
// its directory would permit replacement, and where it holds the bytes already.
//
// Kept are the permission bits, the access control list, the owner (where the process may set it),
// the extended attributes that can be copied, and symbolic links, which are followed. A new file
// gets mode 0644 less the umask. Other names of the file (hard links) keep the old content.
//
// A file that cannot be replaced is written in place: one that is not a regular file (a device, a
// pipe), one reached through a link below /proc, one whose directory does not permit replacement,
// and one whose file system does not let a new file have its mode or access control list. There a
// killed process, a loss of power or a failed write may leave a part of the new content. A full
// disk does not: a regular file keeps its old content then.
//
// May be called from any number of threads and processes at once: the last call wins, whole.
bool replaceFile(char const* file, char const* bytes, size_t length, Durability durability);

// The first part of a replacement, for a change of several files (FileChange.h): makes the new
// file, synced, and gives it the name `text` instead of the target's. To rename it to the target
// and to sync the target's folder is left to do. False where a file could only be written in place:
// the new file is made in the target's folder, as whatever stops that, or the rename to `text`,
// would stop the rename to the target, too. On failure nothing is left.
bool prepareReplacement(SaveTarget& target, char const* bytes, size_t length, char const* text);

}  // namespace vobiutils
