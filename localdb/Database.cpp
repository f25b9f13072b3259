// The document of a database, between its data file and memory.
#include "localdb/Database.h"

#include <sys/stat.h>

#include <new>

#include "TreeMapObject.h"
#include "jsondata/JsonDocument.h"
#include "jsondata/files/FileContent.h"
#include "localdb/FileName.h"
#include "logging/Log.h"
#include "treemap/NewHandle.h"

namespace vobiutils {

bool Database::hasValue() const { return document_ != nullptr && document_->jobj != nullptr; }

uint64_t Database::load(char const* function, int number) {
    FileName const file = FileName::ofData(apiType);
    if (file.get() == nullptr) {
        return 0;
    }
    struct stat status;
    if (stat(file.get(), &status) != 0) {
        document_ = nullptr;
        UTIL_WARN("%s: Cannot load database from %s\n", function, file.get());
        return 0;
    }
    FileContent content;
    bool const isRead = content.read(file.get()) == 0;
    document_ = newOwningHandle(isRead ? content.bytes.parse() : nullptr);
    UTIL_DEBUG("%s: Initialized local database for api type %d\n", function, number);
    return hasValue() ? content.bytes.version() : 0;
}

bool Database::tryLoad(char const* function, int number, uint64_t& version) {
    try {
        version = load(function, number);
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

bool Database::tryGet(char const* path, TreeMapObject*& node) const {
    try {
        node = document_->get(path);
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

int Database::save(uint64_t& version) {
    FileName const file = FileName::ofData(apiType);
    UTIL_DEBUG("%s: type=%d save object %p to file %s\n", "saveDbObject", static_cast<int>(apiType),
               static_cast<void*>(document_), printable(file.get()));
    int const result = saveDocument(file.get(), document_, &version);
    drop();
    return result;
}

void Database::drop() {
    delete document_;
    document_ = nullptr;
}

}  // namespace vobiutils
