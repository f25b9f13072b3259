// Makes the documents that snapshots share from the data files.
#include "localdb/SnapshotStore.h"

#include <errno.h>

#include <new>

#include "localdb/DatabaseChange.h"
#include "localdb/FileName.h"

namespace vobiutils {

namespace {

// By API type, so that each has a place of its own.
constinit FileCache documents;
static_assert(API_TYPE_COUNT <= FileCache::SIZE);

LocalDbSnapshot::Status statusOf(int error) {
    switch (error) {
        case 0: return LocalDbSnapshot::READ;
        case ENOENT:
        case ENOTDIR: return LocalDbSnapshot::NO_FILE;
        case ENOMEM: return LocalDbSnapshot::NO_MEMORY;
        default: return LocalDbSnapshot::UNREADABLE;
    }
}

int makeDocument(FileBytes const& bytes, Shared<Made>& made) {
    JsonRef root(bytes.parse());
    if (!root) {
        return errno == ENOMEM ? ENOMEM : EINVAL;
    }
    auto* const document = new (std::nothrow) SharedDocument(root.get(), bytes.version());
    if (document == nullptr) {
        return ENOMEM;
    }
    root.release();
    made = Shared<Made>(document);
    return 0;
}

// A change that is under way leaves each file old or new; only one that was interrupted is
// finished.
void finishLeftChange() { finishChange("LocalDbSnapshot", false); }

Maker const MAKER = {makeDocument, SIZE_MAX, finishLeftChange};

}  // namespace

LocalDbSnapshot::Status findDocument(unsigned int apiType, Shared<SharedDocument>& document) {
    if (apiType >= API_TYPE_COUNT) {
        return LocalDbSnapshot::BAD_ARGUMENTS;
    }
    FileName const file = FileName::ofData(apiType);
    if (file.get() == nullptr) {
        return LocalDbSnapshot::NO_FILE;
    }
    struct stat status;
    if (stat(file.get(), &status) != 0) {
        return statusOf(errno);
    }
    Shared<Made> made;
    int const error = documents.get(apiType, file.get(), status, MAKER, made);
    document = Shared<SharedDocument>(static_cast<SharedDocument*>(made.release()));
    return statusOf(error);
}

void forgetDocuments() { documents.forget(); }

}  // namespace vobiutils
