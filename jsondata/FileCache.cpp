#include "jsondata/FileCache.h"

#include <errno.h>
#include <string.h>

#include <new>
#include <utility>

#include "jsondata/files/FileContent.h"
#include "logging/MutexGuard.h"

namespace vobiutils {

// A file that was read, and what was made of it. Not changed once other threads can find it.
struct FileCache::Kept : Counted {
    FileContent content;  // open; its bytes are kept only if it is recent
    Shared<Made> made;
};

FileCache::Entry* FileCache::find(uint64_t key, Maker const& maker) {
    for (Entry& entry : entries_) {
        if (entry.kept != nullptr && entry.key == key && entry.maker == &maker) {
            return &entry;
        }
    }
    return nullptr;
}

// An empty entry has never been used.
FileCache::Entry& FileCache::leastRecentlyUsed() {
    Entry* oldest = entries_;
    for (Entry& entry : entries_) {
        oldest = entry.usedAt < oldest->usedAt ? &entry : oldest;
    }
    return *oldest;
}

// Whether `made` is what is kept of the file. If not, `recent` is what is kept under the key if its
// bytes are, and the read has begun.
bool FileCache::share(Read& read, FileIdentity const& file, Shared<Made>& made,
                      Shared<Kept>& recent) {
    MutexGuard const guard(mutex_);
    read.begunAt = ++clock_;
    Entry* const entry = find(read.key, read.maker);
    if (entry == nullptr) {
        return false;
    }
    entry->usedAt = clock_;
    FileContent const& content = entry->kept->content;
    if (content.isRecent) {
        recent = Shared<Kept>(addOwner(entry->kept));
        return false;
    }
    if (content.identity != file) {
        return false;
    }
    made = entry->kept->made;
    return true;
}

// Does nothing if a read that began later has been kept, or dropped, already.
void FileCache::keep(Read const& read, Shared<Kept> kept) {
    Kept* replaced = kept.release();
    {
        MutexGuard const guard(mutex_);
        Entry* entry = find(read.key, read.maker);
        uint64_t const newest = entry != nullptr ? entry->begunAt : forgottenAt_;
        if (read.begunAt > newest) {
            entry = entry != nullptr ? entry : &leastRecentlyUsed();
            std::swap(entry->kept, replaced);
            entry->maker = &read.maker;
            entry->key = read.key;
            entry->begunAt = read.begunAt;
            entry->usedAt = ++clock_;
        }
    }
    removeOwner(replaced);
}

int FileCache::make(Read const& read, char const* file, Kept const* recent, Shared<Made>& made) {
    Shared<Kept> kept(new (std::nothrow) Kept);
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
        keep(read, kept);
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
    for (Entry& entry : entries_) {
        Kept* dropped = nullptr;
        {
            MutexGuard const guard(mutex_);
            forgottenAt_ = clock_;
            std::swap(entry.kept, dropped);
            entry.usedAt = 0;
        }
        removeOwner(dropped);
    }
}

}  // namespace vobiutils
