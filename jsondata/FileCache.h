// Keeps what was made of files, to use it again as long as each file is the same.
//
//     the file, by stat()      when it was read       a call
//     is the one that is kept  not changed lately     shares what was made
//     is the one that is kept  changed just before    reads the file, and makes anew if the bytes differ
//     is another               -                      reads the file, and makes anew
//     none is kept             -                      reads the file, and makes anew
//
// Each thread reads for itself, and then puts what it has made in place of what was kept. The mutex
// is held only to share or to replace pointers.
#pragma once

#include <pthread.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/stat.h>

#include "jsondata/Shared.h"
#include "jsondata/files/FileBytes.h"
#include "jsondata/files/FileIdentity.h"

namespace vobiutils {

// The base of what is made of a file. Threads share it, so that nothing writes to it without a rule
// of its own.
struct Made : Counted {
    virtual ~Made() = default;
};

struct Maker {
    // Makes it of the bytes of a file, and returns 0. With any other result, an error of the
    // system, what it has made goes to the caller, but is not kept.
    int (*make)(FileBytes const& bytes, Shared<Made>& made);
    size_t largest;               // nothing is kept of a file of more bytes
    void (*prepare)() = nullptr;  // is called before a file is read
};

// Keeps SIZE files open at most, and replaces the one whose last use is the longest ago. Has no
// destructor: threads may still use it when the process ends.
class FileCache {
  public:
    static size_t const SIZE = 16;

    FileCache() = default;
    FileCache(FileCache const&) = delete;
    FileCache& operator=(FileCache const&) = delete;

    // Sets `made` to what `maker` makes, or has made, of the file that `status` was read from.
    // Returns 0 or an error of the system. What is made under a key replaces what the same maker
    // made under it before; a key that two files share costs time, and no more.
    int get(uint64_t key, char const* file, struct stat const& status, Maker const& maker,
            Shared<Made>& made);

    // The same, under the file's name.
    int get(char const* file, struct stat const& status, Maker const& maker, Shared<Made>& made);

    // Drops what is kept, and does not keep what is being read.
    void forget();

  private:
    struct Kept;
    // One call that found nothing it could use.
    struct Read {
        uint64_t key;
        Maker const& maker;
        uint64_t begunAt;
    };

    Kept** find(Read const& read);
    Kept*& leastRecentlyUsed();
    bool share(Read& read, FileIdentity const& file, Shared<Made>& made, Shared<Kept>& recent);
    int make(Read const& read, char const* file, Kept const* recent, Shared<Made>& made);
    void keep(Shared<Kept> kept);

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    Kept* kept_[SIZE] = {};  // null where nothing is kept
    uint64_t clock_ = 0;     // counts the calls
    uint64_t forgottenAt_ = 0;
};

}  // namespace vobiutils
