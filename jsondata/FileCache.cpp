// Finds, makes, keeps and drops what was made of files.
#include "jsondata/FileCache.h"

#include <assert.h>
#include <errno.h>
#include <string.h>

#include <new>
#include <utility>

#include "jsondata/files/FileContent.h"
#include "logging/MutexGuard.h"

namespace vobiutils {

// A file that was read, and what was made of it. Once other threads can find it, only `usedAt` is
// changed.
struct FileCache::Kept : Counted {
    explicit Kept(Read const& from) : read(from) {}

    Read const read;
    FileContent content;  // open; its bytes are kept only if it is recent
    Shared<Made> made;
    uint64_t usedAt = 0;  // guarded by the cache's mutex
};

FileCache::Kept** FileCache::find(Read const& read) {
    for (Kept*& kept : kept_) {
        if (kept != nullptr && kept->read.key == read.key && &kept->read.maker == &read.maker) {
            return &kept;
        }
    }
    return nullptr;
}

// The first place where nothing is kept, if there is one.
FileCache::Kept*& FileCache::leastRecentlyUsed() {
    Kept** oldest = kept_;
    for (Kept*& kept : kept_) {
        if (kept == nullptr) {
            return kept;
        }
        oldest = kept->usedAt < (*oldest)->usedAt ? &kept : oldest;
    }
    return *oldest;
}

// Whether `made` is what is kept of the file. If not, `recent` is what is kept under the key if its
// bytes are, and the read has begun.
bool FileCache::share(Read& read, FileIdentity const& file, Shared<Made>& made,
                      Shared<Kept>& recent) {
    MutexGuard const guard(mutex_);
    read.begunAt = ++clock_;
    Kept** const place = find(read);
    if (place == nullptr) {
        return false;
    }
    Kept& kept = **place;
    assert(kept.content.isSettled && kept.made);
    kept.usedAt = clock_;
    if (kept.content.isRecent) {
        recent = Shared<Kept>(addOwner(&kept));
        return false;
    }
    if (kept.content.identity != file) {
        return false;
    }
    made = kept.made;
    return true;
}

// Does nothing if a read that began later has been kept, or dropped, already.
void FileCache::keep(Shared<Kept> kept) {
    Read const& read = kept->read;
    Kept* replaced = kept.release();
    {
        MutexGuard const guard(mutex_);
        assert(read.begunAt <= clock_ && replaced->content.isSettled);
        Kept** const place = find(read);
        uint64_t const newest = place != nullptr ? (*place)->read.begunAt : forgottenAt_;
        if (read.begunAt > newest) {
            replaced->usedAt = ++clock_;
            std::swap(place != nullptr ? *place : leastRecentlyUsed(), replaced);
        }
    }
    removeOwner(replaced);
}

int FileCache::make(Read const& read, char const* file, Kept const* recent, Shared<Made>& made) {
    Shared<Kept> kept(new (std::nothrow) Kept(read));
    if (!kept) {
        return ENOMEM;
    }
    if (read.maker.prepare != nullptr) {
        read.maker.prepare();
    }
    FileContent& content = kept->content;
    int error = content.read(file);
    if (error != 0) {
        return error;
    }
    if (recent != nullptr && recent->content.bytes == content.bytes) {
        made = recent->made;
    } else if ((error = read.maker.make(content.bytes, made)) != 0) {
        return error;
    }
    if (content.isSettled && content.bytes.length() <= read.maker.largest) {
        if (!content.isRecent) {
            content.bytes.clear();
        }
        kept->made = made;
        keep(kept);
    }
    return 0;
}

int FileCache::get(uint64_t key, char const* file, struct stat const& status, Maker const& maker,
                   Shared<Made>& made) {
    Read read = {key, maker, 0};
    Shared<Kept> recent;
    return share(read, FileIdentity(status), made, recent) ? 0
                                                           : make(read, file, recent.get(), made);
}

int FileCache::get(char const* file, struct stat const& status, Maker const& maker,
                   Shared<Made>& made) {
    return get(hashOf(file, strlen(file)), file, status, maker, made);
}

void FileCache::forget() {
    for (Kept*& kept : kept_) {
        Kept* dropped = nullptr;
        {
            MutexGuard const guard(mutex_);
            forgottenAt_ = clock_;
            std::swap(kept, dropped);
        }
        removeOwner(dropped);
    }
}

}  // namespace vobiutils
