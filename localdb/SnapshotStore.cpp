// What is known of each data file, and the rules by which it is used again.
//
//     the file, by stat()           when it was read    a snapshot
//     is the one that is kept       not changed lately  shares the document
//     is the one that is kept       changed just before reads the file, and parses it if the bytes
//                                                       are not those that are kept for this
//     is another, or none is kept                       reads and parses the file
//
// Each thread reads for itself and then puts what it has read in place of what was kept. A slot's
// mutex is held only to share or to replace a pointer.
#include "localdb/SnapshotStore.h"

#include <errno.h>
#include <pthread.h>
#include <sys/stat.h>

#include <new>
#include <utility>

#include "jsondata/files/FileContent.h"
#include "localdb/FileName.h"
#include "logging/MutexGuard.h"

namespace vobiutils {

namespace {

// A file that was read, and its document. Not changed once other threads can find it.
struct Kept : Counted {
    FileContent content;  // open; its bytes are kept only if it is recent
    Shared<SharedDocument> document;
};

// Has no destructor: threads may still read when the process ends.
struct Slot {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    Kept* kept = nullptr;
    uint64_t reads = 0;   // how many have begun
    uint64_t keptAt = 0;  // the number of the one that `kept` is from

    bool find(FileIdentity const& file, Shared<SharedDocument>& document);
    uint64_t beginRead(Shared<Kept>& recent);
    void keep(Shared<Kept> read, uint64_t number);
    void forget();
};

constinit Slot slots[API_TYPE_COUNT];

bool Slot::find(FileIdentity const& file, Shared<SharedDocument>& document) {
    MutexGuard const guard(mutex);
    bool const isKept = kept != nullptr && kept->content.identity == file;
    if (!isKept || kept->content.isRecent) {
        return false;
    }
    document = kept->document;
    return true;
}

// Returns the number of the read. Sets `recent` to what is kept, if its bytes are.
uint64_t Slot::beginRead(Shared<Kept>& recent) {
    MutexGuard const guard(mutex);
    if (kept != nullptr && kept->content.isRecent) {
        recent = Shared<Kept>(addOwner(kept));
    }
    return ++reads;
}

// Does nothing if a read that began later has been kept, or dropped, already.
void Slot::keep(Shared<Kept> read, uint64_t number) {
    Kept* replaced = read.release();
    {
        MutexGuard const guard(mutex);
        if (number > keptAt) {
            keptAt = number;
            std::swap(kept, replaced);
        }
    }
    removeOwner(replaced);
}

void Slot::forget() {
    Kept* dropped = nullptr;
    {
        MutexGuard const guard(mutex);
        keptAt = reads;
        std::swap(kept, dropped);
    }
    removeOwner(dropped);
}

LocalDbSnapshot::Status statusOf(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR: return LocalDbSnapshot::NO_FILE;
        case ENOMEM: return LocalDbSnapshot::NO_MEMORY;
        default: return LocalDbSnapshot::UNREADABLE;
    }
}

// Sets the document of a file that has been read. Returns 0 or an error of the system.
int parse(Kept& read) {
    JsonRef root(read.content.bytes.parse());
    if (!root) {
        return errno == ENOMEM ? ENOMEM : EINVAL;
    }
    auto* const document =
        new (std::nothrow) SharedDocument(root.get(), read.content.bytes.version());
    if (document == nullptr) {
        return ENOMEM;
    }
    root.release();
    read.document = Shared<SharedDocument>(document);
    return 0;
}

// Sets `document` to the content of the file, and keeps it. Returns 0 or an error of the system.
int readDocument(char const* name, Slot& slot, Shared<SharedDocument>& document) {
    Shared<Kept> recent;
    uint64_t const number = slot.beginRead(recent);
    Shared<Kept> read(new (std::nothrow) Kept);
    if (!read) {
        return ENOMEM;
    }
    FileContent& content = read->content;
    int error = content.read(name);
    if (error != 0) {
        return error;
    }
    if (recent && recent->content.bytes == content.bytes) {
        read->document = recent->document;
    } else if ((error = parse(*read.get())) != 0) {
        return error;
    }
    document = read->document;
    if (!content.isRecent) {
        content.bytes.clear();
    }
    if (content.isSettled) {
        slot.keep(read, number);
    }
    return 0;
}

}  // namespace

LocalDbSnapshot::Status findDocument(unsigned int apiType, Shared<SharedDocument>& document) {
    if (apiType >= API_TYPE_COUNT) {
        return LocalDbSnapshot::BAD_ARGUMENTS;
    }
    Slot& slot = slots[apiType];
    FileName const file = FileName::ofData(apiType);
    if (file.get() == nullptr) {
        return LocalDbSnapshot::NO_FILE;
    }
    struct stat status;
    if (stat(file.get(), &status) != 0) {
        return statusOf(errno);
    }
    if (slot.find(FileIdentity(status), document)) {
        return LocalDbSnapshot::READ;
    }
    int const error = readDocument(file.get(), slot, document);
    return error == 0 ? LocalDbSnapshot::READ : statusOf(error);
}

void forgetDocuments() {
    for (Slot& slot : slots) {
        slot.forget();
    }
}

}  // namespace vobiutils
