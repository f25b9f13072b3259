// Fuzz target: a schema on the first line, an instance after it. Validation must end within its
// limits, leave both unchanged, and return the same result twice; a schema and its negation are
// never both satisfied.
#include <jsonschema.h>

#include "Fuzz.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

json_object* negation(json_object* schema) {
    json_object* const outer = json_object_new_object();
    json_object_object_add(outer, "not", json_object_get(schema));
    return outer;
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
    require(json_validate_instance(instance.get(), schema.get()) == valid);
    require(text(schema.get()) + text(instance.get()) == before);
    if (before.find('$') == before.npos) {  // no "$ref", no "$schema"
        JsonRef const negated(negation(schema.get()));
        require(valid == 0 || json_validate_instance(instance.get(), negated.get()) == 0);
    }
    return 0;
}
