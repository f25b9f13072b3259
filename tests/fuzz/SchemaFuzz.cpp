// Fuzz target: a schema on the first line, an instance after it. Validation must end within its
// limits, leave both unchanged, and return the same result with a compiled schema, with and without a
// fault; a schema and its negation are never both satisfied; a fault is complete and valid UTF-8.
#include <jsonschema.h>
#include <string.h>

#include "Fuzz.h"
#include "jsondata/JsonRef.h"
#include "jsondata/Utf8.h"

using namespace vobiutils;

namespace {

json_object* negation(json_object* schema) {
    json_object* const outer = json_object_new_object();
    json_object_object_add(outer, "not", json_object_get(schema));
    return outer;
}

void requireUtf8(char const* string, size_t size) {
    size_t const length = strnlen(string, size);
    require(length < size);
    for (size_t at = 0; at < length;) {
        size_t const bytes = characterLength(string + at, string + length);
        require(bytes > 0);
        at += bytes;
    }
}

void requireFault(json_schema_fault const& fault) {
    requireUtf8(fault.path, sizeof fault.path);
    requireUtf8(fault.keyword, sizeof fault.keyword);
    requireUtf8(fault.message, sizeof fault.message);
    requireUtf8(fault.schema_path, sizeof fault.schema_path);
    require(fault.keyword[0] != '\0' && fault.message[0] != '\0');
}

// The schema is compiled from a document of its own, which is gone when it is applied.
int checkCompiled(std::string const& text, json_object* instance) {
    json_schema_fault fault;
    memset(&fault, 0xFF, sizeof fault);
    JsonRef document(json_tokener_parse(text.c_str()));
    json_schema* const schema = json_schema_compile(document.get(), &fault);
    document.reset(nullptr);
    int const valid = schema != nullptr ? json_schema_check(schema, instance, &fault) : 0;
    if (valid == 0) {
        requireFault(fault);
    }
    require(schema == nullptr || json_schema_check(schema, instance, nullptr) == valid);
    json_schema_free(schema);
    return valid;
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    std::string input = asText(data, size);
    std::string line;
    takeLine(input, line);
    JsonRef const schema(json_tokener_parse(line.c_str()));
    JsonRef const instance(json_tokener_parse(input.c_str()));
    std::string const before = text(schema.get()) + text(instance.get());
    int const valid = json_validate_instance(instance.get(), schema.get());
    require(checkCompiled(line, instance.get()) == valid);
    require(text(schema.get()) + text(instance.get()) == before);
    if (before.find('$') == before.npos) {  // no "$ref", no "$schema"
        JsonRef const negated(negation(schema.get()));
        require(valid == 0 || json_validate_instance(instance.get(), negated.get()) == 0);
    }
    return 0;
}
