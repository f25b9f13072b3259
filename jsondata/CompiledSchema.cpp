// Compiles schemas with what the validator at hand offers, and asks it about values.
#include "CompiledSchema.h"

#include "jsondata/SharedSchema.h"

using namespace vobiutils;

namespace {

CompiledSchema::Fault const NO_MEMORY = {"", "schema", "cannot be checked: out of memory", ""};

}  // namespace

CompiledSchema::CompiledSchema(char const* file) : schema_(compileSchemaFile(file)) {}

CompiledSchema::CompiledSchema(json_object* document) : schema_(compileSchema(document)) {}

CompiledSchema::CompiledSchema(CompiledSchema const& other) : schema_(addOwner(other.schema_)) {}

CompiledSchema& CompiledSchema::operator=(CompiledSchema const& other) {
    if (this != &other) {
        removeOwner(schema_);
        schema_ = addOwner(other.schema_);
    }
    return *this;
}

CompiledSchema::~CompiledSchema() { removeOwner(schema_); }

CompiledSchema::operator bool() const { return schema_ != nullptr && schema_->isUsable(); }

CompiledSchema::Fault const& CompiledSchema::fault() const {
    return schema_ != nullptr ? schema_->fault : NO_MEMORY;
}

bool CompiledSchema::accepts(json_object* value, Fault* fault) const {
    if (schema_ != nullptr) {
        return schema_->accepts(value, fault);
    }
    if (fault != nullptr) {
        *fault = NO_MEMORY;
    }
    return false;
}
