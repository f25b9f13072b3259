// What tells whether a file is still the one that was read, without reading it again.
//
// Equal identities alone do not prove that: most kernels step the times of files by 4 to 10 ms, and
// may give the inode of a removed file to the next one. So an identity is trusted only if
// - the file that was read is still open, so that its inode is not given away, and
// - the times were not recent when the file was read: a later change then shows in them.
#pragma once

#include <stdint.h>
#include <sys/stat.h>
#include <time.h>

namespace vobiutils {

class FileIdentity {
  public:
    FileIdentity() = default;
    explicit FileIdentity(struct stat const& status);

    bool operator==(FileIdentity const&) const = default;

    // Whether the file was changed less than 20 ms before `now`, or after it; less than 2 s if its
    // times are whole seconds, as some file systems for flash keep no others. Such a file may be
    // changed once more without a trace. `now` is a time of CLOCK_REALTIME from before the file was
    // read.
    bool isRecentAt(timespec const& now) const;

  private:
    dev_t device_ = 0;
    ino_t inode_ = 0;
    off_t size_ = 0;
    int64_t modified_ = 0;  // in nanoseconds since the epoch
    int64_t changed_ = 0;   // the same, of the inode: no program can set it back
    bool isWhole_ = false;  // the later time: JFFS2 counts seconds, FAT every other one
};

}  // namespace vobiutils
