// Compiles schemas with the functions of the validator that do so. A validator in place of the
// library's own may lack them; it is then asked as every validator can be, with a copy of the schema
// each time, to which it may write.
#include "jsondata/SharedSchema.h"

#include <errno.h>
#include <string.h>

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

namespace {

char const NO_MEMORY[] = "cannot be checked: out of memory";
char const NOT_JSON[] = "cannot be checked: the schema is not JSON";
char const NO_SCHEMA[] = "cannot be checked: there is no schema";

bool canCompile() {
    return json_schema_compile != nullptr && json_schema_check != nullptr &&
           json_schema_free != nullptr;
}

Fault faultOf(char const* message) {
    Fault fault = {"", "schema", "", ""};
    strcpy(fault.message, message);
    return fault;
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

bool refuse(Fault const& reason, Fault* fault) {
    if (fault != nullptr) {
        *fault = reason;
    }
    return false;
}

SharedSchema* unusable(char const* reason) {
    auto* const schema = new (std::nothrow) SharedSchema;
    if (schema != nullptr) {
        schema->fault = faultOf(reason);
    }
    return schema;
}

bool isMissing(int error) { return error == ENOENT || error == ENOTDIR; }

char const* reasonOf(int error) {
    if (isMissing(error)) {
        return NO_SCHEMA;
    }
    return error == ENOMEM ? NO_MEMORY : "cannot be checked: the schema cannot be read";
}

// Null if the bytes are not one value. What follows it, other than white space, is of a file that was
// written over or damaged, and there is no telling which part of it counts.
json_object* parseAlone(FileBytes const& bytes) {
    size_t end = 0;
    JsonRef document(bytes.parse(&end));  // sets errno
    return document && bytes.isBlankFrom(end) ? document.release() : nullptr;
}

int compileBytes(FileBytes const& bytes, Shared<Made>& made) {
    JsonRef const document(parseAlone(bytes));
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

Maker const MAKER = {compileBytes, LARGEST_KEPT_SCHEMA};

// `status` is that of the file. Null when out of memory.
SharedSchema* shareSchema(char const* file, struct stat const& status) {
    Shared<Made> made;
    int const error = schemas.get(file, status, MAKER, made);
    return made ? static_cast<SharedSchema*>(made.release()) : unusable(reasonOf(error));
}

}  // namespace

SharedSchema::~SharedSchema() {
    if (canCompile() && compiled != nullptr) {
        json_schema_free(compiled);
    }
}

bool SharedSchema::accepts(json_object* value, Fault* reason) const {
    if (canCompile() && compiled != nullptr) {
        return json_schema_check(compiled, value, reason) != 0;
    }
    if (!document) {
        return refuse(fault, reason);
    }
    JsonRef const copy(copyOf(document.get()));
    bool const isValid = copy && json_validate_instance(value, copy.get()) != 0;
    return isValid || refuse(faultOf(copy ? "is not valid" : NO_MEMORY), reason);
}

SharedSchema* compileSchema(json_object* document) {
    auto* const schema = new (std::nothrow) SharedSchema;
    if (schema == nullptr) {
        return nullptr;
    }
    if (canCompile()) {
        schema->compiled = json_schema_compile(document, &schema->fault);
        return schema;
    }
    schema->document.reset(document != nullptr ? copyOf(document) : nullptr);
    if (!schema->document) {
        schema->fault = faultOf(document != nullptr ? NO_MEMORY : NOT_JSON);
    }
    return schema;
}

SharedSchema* compileSchemaFile(char const* file) {
    struct stat status;
    if (file == nullptr) {
        return unusable(NO_SCHEMA);
    }
    return stat(file, &status) == 0 ? shareSchema(file, status) : unusable(reasonOf(errno));
}

bool satisfiesSchemaFile(json_object* value, char const* file, Fault& fault) {
    struct stat status;
    if (lstat(file, &status) != 0 && isMissing(errno)) {
        return true;
    }
    Shared<SharedSchema> const schema(compileSchemaFile(file));
    return schema ? schema->accepts(value, &fault) : refuse(faultOf(NO_MEMORY), &fault);
}

}  // namespace vobiutils
