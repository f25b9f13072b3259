// Lends a parsed schema to one validation at a time.
#include "jsondata/SchemaFile.h"

#include <assert.h>
#include <errno.h>

#include <atomic>
#include <new>

#include "jsondata/files/JsonFile.h"

namespace vobiutils {

struct ParsedSchema : Made {
    explicit ParsedSchema(json_object* owned) : value(owned) {}

    JsonRef const value;
    std::atomic<bool> isInUse = false;
};

constinit FileCache schemas;

namespace {

int parseSchema(FileBytes const& bytes, Shared<Made>& made) {
    JsonRef value(bytes.parse());
    if (!value) {
        return EINVAL;
    }
    auto* const parsed = new (std::nothrow) ParsedSchema(value.get());
    if (parsed == nullptr) {
        return ENOMEM;
    }
    value.release();
    made = Shared<Made>(parsed);
    return 0;
}

Maker const MAKER = {parseSchema, LARGEST_KEPT_SCHEMA};

Shared<ParsedSchema> findSchema(char const* name, struct stat const& status) {
    Shared<Made> made;
    schemas.get(name, status, MAKER, made);
    return Shared<ParsedSchema>(static_cast<ParsedSchema*>(made.release()));
}

}  // namespace

SchemaFile::SchemaFile(char const* name, struct stat const& status)
    : kept_(findSchema(name, status)), own_(nullptr) {
    if (kept_ && kept_->isInUse.exchange(true, std::memory_order_acquire)) {
        kept_ = Shared<ParsedSchema>();
        own_.reset(readJsonFile(name));
    }
}

SchemaFile::~SchemaFile() {
    if (kept_) {
        assert(kept_->isInUse && !own_);
        kept_->isInUse.store(false, std::memory_order_release);
    }
}

json_object* SchemaFile::get() const { return kept_ ? kept_->value.get() : own_.get(); }

void forgetSchemas() { schemas.forget(); }

}  // namespace vobiutils
