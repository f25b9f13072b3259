// The document of a database, between its data file and memory.
#include "localdb/Database.h"

#include <new>

#include "JsonData.h"
#include "TreeMapObject.h"
#include "localdb/FileName.h"
#include "logging/Log.h"

namespace vobiutils {

bool Database::hasValue() const { return document_ != nullptr && document_->jobj != nullptr; }

void Database::load(char const* function, int number) {
    FileName const file = FileName::ofData(apiType);
    if (file.get() == nullptr) {
        return;
    }
    document_ = JsonData::createObjectFromFile(file.get());
    if (document_ == nullptr) {
        UTIL_WARN("%s: Cannot load database from %s\n", function, file.get());
        return;
    }
    UTIL_DEBUG("%s: Initialized local database for api type %d\n", function, number);
}

bool Database::tryLoad(char const* function, int number) {
    try {
        load(function, number);
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

int Database::save() {
    FileName const file = FileName::ofData(apiType);
    UTIL_DEBUG("%s: type=%d save object %p to file %s\n", "saveDbObject", static_cast<int>(apiType),
               static_cast<void*>(document_), printable(file.get()));
    int const result = JsonData::saveObjectToFile(file.get(), document_);
    drop();
    return result;
}

void Database::drop() {
    delete document_;
    document_ = nullptr;
}

}  // namespace vobiutils
