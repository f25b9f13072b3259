// A compiled schema, shared by those who use it.
#pragma once

#include <json-c/json.h>

#include "CompiledSchema.h"
#include "jsondata/FileCache.h"
#include "jsondata/JsonRef.h"

struct json_schema;

namespace vobiutils {

// What the validator has compiled; or a copy of the schema, for a validator that compiles none; or
// neither, and the reason. Only read, once it is made.
struct SharedSchema : Made {
    ~SharedSchema() override;

    bool isUsable() const { return compiled != nullptr || document; }
    bool accepts(json_object* value, CompiledSchema::Fault* reason) const;

    json_schema* compiled = nullptr;
    JsonRef document{nullptr};  // many threads copy it at once
    CompiledSchema::Fault fault = {};
};

// These return a share, with or without a usable schema; null when out of memory.
SharedSchema* compileSchema(json_object* document);
SharedSchema* compileSchemaFile(char const* file);

// Whether a value satisfies the schema in a file, or there is no such file: one that cannot be used
// refuses every value, and so does a link to nowhere. If not, `fault` says why.
bool satisfiesSchemaFile(json_object* value, char const* file, CompiledSchema::Fault& fault);

}  // namespace vobiutils
