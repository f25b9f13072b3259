// Compares files by what stat() says of them.
#include "jsondata/files/FileIdentity.h"

#include <algorithm>

namespace vobiutils {

namespace {

int64_t nanoseconds(timespec const& time) {
    return static_cast<int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

}  // namespace

FileIdentity::FileIdentity(struct stat const& status)
    : device_(status.st_dev),
      inode_(status.st_ino),
      size_(status.st_size),
      modified_(nanoseconds(status.st_mtim)),
      changed_(nanoseconds(status.st_ctim)),
      isWhole_((modified_ < changed_ ? status.st_ctim : status.st_mtim).tv_nsec == 0) {}

bool FileIdentity::isRecentAt(timespec const& now) const {
    int64_t const second = 1000000000;
    int64_t const latest = std::max(modified_, changed_);
    int64_t const tick = 10000000;  // of a kernel with 100 ticks a second
    int64_t const longestStep = isWhole_ ? 2 * second : 2 * tick;
    return latest > nanoseconds(now) - longestStep;
}

}  // namespace vobiutils
