// The document of a database, between its data file and memory.
#include "localdb/Database.h"

#include <assert.h>
#include <errno.h>
#include <sys/stat.h>

#include <new>
#include <utility>

#include "TreeMapObject.h"
#include "jsondata/JsonDocument.h"
#include "jsondata/SharedSchema.h"
#include "jsondata/files/FileContent.h"
#include "localdb/DatabaseChange.h"
#include "localdb/FileName.h"
#include "logging/Log.h"
#include "treemap/NewHandle.h"

namespace vobiutils {

bool Database::hasValue() const { return document_ != nullptr && document_->jobj != nullptr; }

bool Database::load(char const* function, int number, uint64_t& version) {
    version = 0;
    FileName const file = FileName::ofData(apiType);
    if (file.get() == nullptr) {
        return true;
    }
    struct stat status;
    if (stat(file.get(), &status) != 0) {
        document_ = nullptr;
        UTIL_WARN("%s: Cannot load database from %s\n", function, file.get());
        return true;
    }
    if (finishChange(function) == ChangeState::UNFINISHED) {
        document_ = tryOwningHandle(nullptr);
        return document_ != nullptr;
    }
    std::unique_ptr<FileContent> content(new (std::nothrow) FileContent);
    if (content == nullptr) {
        return false;
    }
    bool const isRead = content->read(file.get()) == 0;
    document_ = tryOwningHandle(isRead ? content->bytes.parse() : nullptr);
    if (document_ == nullptr) {
        return false;
    }
    UTIL_DEBUG("%s: Initialized local database for api type %d\n", function, number);
    version = hasValue() ? remember(std::move(content)) : 0;
    return true;
}

uint64_t Database::remember(std::unique_ptr<FileContent> content) {
    uint64_t const version = content->bytes.version();
    assert(hasValue() && version != 0);  // 0 is that of no content
    if (origins_ != nullptr) {
        Origin& origin = origins_->of[apiType];
        origin.set(document_->jobj, version);
        origin.base = version;
        if (origins_->areReadAgain) {
            content->bytes.clear();
            origin.file = std::move(content);
        }
    }
    return version;
}

bool Database::tryGet(char const* path, TreeMapObject*& node) const {
    return vobiutils::tryGet(document_->jobj, path, node);
}

bool Database::isValid(CompiledSchema::Fault& fault) const {
    FileName const schema = FileName::ofDataSchema(apiType);
    if (schema.get() == nullptr) {
        return true;  // nor has the data file a name, and no save succeeds
    }
    return satisfiesSchemaFile(hasValue() ? document_->jobj : nullptr, schema.get(), fault);
}

// What is not a regular file is never another: to read it could take for ever.
bool Database::isFileAnother() const {
    uint64_t const base = origins_ != nullptr ? origins_->of[apiType].base : 0;
    FileName const file = FileName::ofData(apiType);
    if (base == 0 || file.get() == nullptr ||
        finishChange("LocalDbTransaction") == ChangeState::UNFINISHED) {
        return false;
    }
    uint64_t now = 0;
    return readVersion(file.get(), now) ? now != base : errno != EINVAL;
}

int Database::save(uint64_t& version) {
    FileName const file = FileName::ofData(apiType);
    UTIL_DEBUG("%s: type=%d save object %p to file %s\n", "saveDbObject", static_cast<int>(apiType),
               static_cast<void*>(document_), printable(file.get()));
    int result = 2;
    if (finishChange("saveDbObject") != ChangeState::UNFINISHED) {
        result = saveDocument(file.get(), document_, &version);
    }
    drop();
    return result;
}

void Database::drop() {
    delete document_;
    document_ = nullptr;
    forgetOrigin();
    if (origins_ != nullptr) {
        origins_->of[apiType].base = 0;
    }
}

Origin const* Database::origin() const {
    if (origins_ == nullptr || !hasValue()) {
        return nullptr;
    }
    Origin const& origin = origins_->of[apiType];
    return origin.root.get() == document_->jobj ? &origin : nullptr;
}

void Database::forgetOrigin() {
    if (origins_ != nullptr) {
        origins_->of[apiType].forget();
    }
}

void Database::restore(json_object* copy, uint64_t version) {
    assert(hasValue() && copy != nullptr);
    json_object_put(document_->jobj);
    document_->jobj = copy;
    if (origins_ != nullptr && version != 0) {
        origins_->of[apiType].set(copy, version);
    }
}

}  // namespace vobiutils
