// The two functions of the library: make the schema ready, apply it, and let nothing undecided pass.
#include "jsonschema.h"

#include <exception>

#include "jsondata/files/JsonFile.h"
#include "jsonschema/Evaluation.h"

using namespace jsonschema;
using vobiutils::readJsonFile;

namespace {

bool isValid(json_object* instance, json_object* document) {
    Budget budget;
    Schema const schema(document, budget);
    return schema.isWellFormed() && Evaluation(schema, budget).satisfies(instance, document) &&
           !budget.isUndecided();
}

}  // namespace

extern "C" int json_validate_instance(json_object* instance, json_object* schema) {
    try {
        return isValid(instance, schema) ? 1 : 0;
    } catch (std::exception const&) {  // no memory
        return 0;
    }
}

extern "C" int json_validate_instance_from_file(char const* instance_file,
                                                char const* schema_file) {
    json_object* const instance = readJsonFile(instance_file);
    json_object* const schema = readJsonFile(schema_file);
    int const valid =
        instance != nullptr && schema != nullptr ? json_validate_instance(instance, schema) : 0;
    json_object_put(instance);
    json_object_put(schema);
    return valid;
}
