// The functions of the library: compile the schema, apply it, and let nothing undecided pass.
#include "jsonschema.h"

#include <memory>
#include <new>

#include "jsondata/files/JsonFile.h"
#include "jsonschema/Compiler.h"
#include "jsonschema/Evaluation.h"
#include "jsonschema/Fault.h"

using namespace jsonschema;
using vobiutils::readJsonFile;

struct json_schema {
    Schema schema;
};

namespace {

// Each check has the limits for itself, also the search for the first fault.

bool isValid(json_object* instance, Schema const& schema) {
    Budget budget;
    return Evaluation(budget).satisfies(instance, *schema.root, {}) && !budget.isUndecided();
}

void findFault(json_object* instance, Schema const& schema, json_schema_fault& fault) {
    Budget budget;
    std::unique_ptr<Finding> const finding(new (std::nothrow) Finding);
    if (finding == nullptr) {
        describe(Finding(), instance, fault);
        return;
    }
    Evaluation(budget, finding.get()).satisfies(instance, *schema.root, {});
    describe(*finding, instance, fault);
}

}  // namespace

extern "C" int json_validate_instance(json_object* instance, json_object* schema) {
    char buffer[4000];
    Schema compiled(buffer, sizeof buffer);
    Budget budget;
    return Compiler(compiled, budget, false).compile(schema) && isValid(instance, compiled) ? 1 : 0;
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

extern "C" json_schema* json_schema_compile(json_object* document, json_schema_fault* fault) {
    std::unique_ptr<json_schema> compiled(new (std::nothrow) json_schema);
    Budget budget;
    if (compiled == nullptr) {
        budget.giveUp();
    } else {
        Compiler compiler(compiled->schema, budget, true);
        if (compiler.compile(document)) {
            return compiled.release();
        }
        if (fault != nullptr) {
            describe(compiler.malformation(), budget.isUndecided(), *fault);
        }
        return nullptr;
    }
    if (fault != nullptr) {
        describe(Malformation(), budget.isUndecided(), *fault);
    }
    return nullptr;
}

extern "C" int json_schema_check(json_schema const* schema, json_object* instance,
                                 json_schema_fault* fault) {
    if (schema == nullptr) {
        if (fault != nullptr) {
            describe("there is no schema", *fault);
        }
        return 0;
    }
    bool const valid = isValid(instance, schema->schema);
    if (!valid && fault != nullptr) {
        findFault(instance, schema->schema, *fault);
    }
    return valid ? 1 : 0;
}

extern "C" void json_schema_free(json_schema* schema) { delete schema; }
