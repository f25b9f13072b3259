// Compiles schemas with the functions of the validator that do so. A validator in place of the
// library's own may lack them; it is then asked as every validator can be, with a copy of the schema
// each time, to which it may write.
#include "jsondata/SharedSchema.h"

#include <errno.h>

#include <new>

#include "jsondata/SchemaFile.h"

using Fault = CompiledSchema::Fault;

// Declared here, as jsonschema.h may be that of another validator. A Fault is a json_schema_fault.
extern "C" {
int json_validate_instance(json_object* instance, json_object* schema);
[[gnu::weak]] json_schema* json_schema_compile(json_object* document, Fault* fault);
[[gnu::weak]] int json_schema_check(json_schema const* schema, json_object* instance, Fault* fault);
[[gnu::weak]] void json_schema_free(json_schema* schema);
}

namespace vobiutils {

Fault const NO_MEMORY_FOR_SCHEMA = {"", "schema", "cannot be checked: out of memory", ""};

namespace {

Fault const NOT_VALID = {"", "schema", "is not valid", ""};
Fault const NO_FILE = {"", "schema", "cannot be checked: there is no schema", ""};
Fault const UNREADABLE = {"", "schema", "cannot be checked: the schema cannot be read", ""};
Fault const NOT_JSON = {"", "schema", "cannot be checked: the schema is not JSON", ""};

constinit FileCache schemas(LARGEST_KEPT_SCHEMA);

bool canCompile() {
    return json_schema_compile != nullptr && json_schema_check != nullptr &&
           json_schema_free != nullptr;
}

bool refuse(Fault const& reason, Fault* fault) {
    if (fault != nullptr) {
        *fault = reason;
    }
    return false;
}

// Null when out of memory.
json_object* copyOf(json_object* value) {
    json_object* copy = nullptr;
    if (json_object_deep_copy(value, &copy, nullptr) != 0) {
        json_object_put(copy);
        return nullptr;
    }
    return copy;
}

SharedSchema* unusable(Fault const& reason) {
    auto* const schema = new (std::nothrow) SharedSchema;
    if (schema != nullptr) {
        schema->fault = reason;
    }
    return schema;
}

Fault const& reasonOf(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR: return NO_FILE;
        case ENOMEM: return NO_MEMORY_FOR_SCHEMA;
        default: return UNREADABLE;
    }
}

int compileBytes(FileBytes const& bytes, Shared<Made>& made) {
    JsonRef const document(bytes.parse());
    if (!document && errno == ENOMEM) {
        return ENOMEM;
    }
    SharedSchema* const schema = document ? compileSchema(document.get()) : unusable(NOT_JSON);
    if (schema == nullptr) {
        return ENOMEM;
    }
    made = Shared<Made>(schema);
    return schema->isUsable() ? 0 : EINVAL;
}

}  // namespace

SharedSchema::~SharedSchema() {
    if (compiled != nullptr) {
        json_schema_free(compiled);
    }
}

bool SharedSchema::accepts(json_object* value, Fault* reason) const {
    if (compiled != nullptr) {
        return json_schema_check(compiled, value, reason) != 0;
    }
    if (!document) {
        return refuse(fault, reason);
    }
    JsonRef const copy(copyOf(document.get()));
    if (!copy) {
        return refuse(NO_MEMORY_FOR_SCHEMA, reason);
    }
    return json_validate_instance(value, copy.get()) != 0 || refuse(NOT_VALID, reason);
}

SharedSchema* compileSchema(json_object* document) {
    if (!canCompile() && document == nullptr) {
        return unusable(NOT_JSON);
    }
    SharedSchema* const schema = unusable(Fault());
    if (schema == nullptr) {
        return nullptr;
    }
    if (canCompile()) {
        schema->compiled = json_schema_compile(document, &schema->fault);
    } else {
        schema->document.reset(copyOf(document));
        schema->fault = schema->document ? Fault() : NO_MEMORY_FOR_SCHEMA;
    }
    return schema;
}

SharedSchema* compileSchemaFile(char const* file) {
    struct stat status;
    if (file == nullptr) {
        return unusable(NO_FILE);
    }
    if (stat(file, &status) != 0) {
        return unusable(reasonOf(errno));
    }
    Shared<Made> made;
    int const error = schemas.get(file, status, compileBytes, made);
    return made ? static_cast<SharedSchema*>(made.release()) : unusable(reasonOf(error));
}

void forgetCompiledSchemas() { schemas.forget(); }

}  // namespace vobiutils
