// Runs the cases of the file given as argument, and then the JSON Schema Test Suite, installed by
// Debian's package json-schema-test-suite: every required case that needs no second document must
// pass. Optional cases are only counted.
#include <jsonschema.h>
#include <stdio.h>

#include <filesystem>
#include <string>

#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace fs = std::filesystem;

namespace {

struct Count {
    int cases = 0;
    int passed = 0;
};

json_object* member(json_object* object, char const* name) {
    json_object* value = nullptr;
    json_object_object_get_ex(object, name, &value);
    return value;
}

std::string text(json_object* value) {
    return json_object_to_json_string_ext(value, JSON_C_TO_STRING_NOSLASHESCAPE);
}

bool needsOtherDocument(json_object* schema, fs::path const& file) {
    return file.filename() == "refRemote.json" ||
           text(schema).find("\"$ref\":\"http://json-schema.org/draft-") != std::string::npos;
}

// In the suite the folder, not the schema, names the draft.
void declareDraft(json_object* schema, std::string const& draft) {
    if (json_object_is_type(schema, json_type_object) && member(schema, "$schema") == nullptr) {
        std::string const uri = "http://json-schema.org/draft-0" + draft + "/schema#";
        json_object_object_add(schema, "$schema", json_object_new_string(uri.c_str()));
    }
}

// The same result from a compiled schema, whose document is gone by then; and the fault, where a case
// names its path, keyword, message and schema path.
bool isConfirmed(json_object* schema, json_object* data, bool expected, json_object* fault) {
    json_schema_fault found = {};
    JsonRef document(json_tokener_parse(text(schema).c_str()));
    json_schema* const compiled = json_schema_compile(document.get(), &found);
    document.reset(nullptr);
    bool good = compiled == nullptr
                    ? !expected
                    : json_schema_check(compiled, data, &found) == (expected ? 1 : 0);
    json_schema_free(compiled);
    good = good && expected == (found.keyword[0] == '\0');
    for (auto const& [i, field] : {std::pair<size_t, char const*>(0, found.path),
                                   {1, found.keyword},
                                   {2, found.message},
                                   {3, found.schema_path}}) {
        json_object* const wanted =
            fault != nullptr ? json_object_array_get_idx(fault, i) : nullptr;
        if (wanted != nullptr && std::string(field) != json_object_get_string(wanted)) {
            printf("  fault: %s\n", field);
            good = false;
        }
    }
    return good;
}

// Validation leaves schema and instance unchanged; a malformed schema is never satisfied, nor its
// negation.
bool passes(json_object* group, json_object* test) {
    json_object* schema = nullptr;
    json_object* data = nullptr;
    json_object* const valid = member(test, "valid");
    if (!json_object_object_get_ex(group, "schema", &schema) ||
        !json_object_object_get_ex(test, "data", &data) ||
        !json_object_is_type(valid, json_type_boolean)) {
        return false;
    }
    std::string const before = text(group);
    bool const expected = json_object_get_boolean(valid) != 0;
    bool good = (json_validate_instance(data, schema) != 0) == expected &&
                isConfirmed(schema, data, expected, member(test, "fault"));
    if (json_object_get_boolean(member(group, "malformed"))) {
        JsonRef const negated(json_object_new_object());
        json_object_object_add(negated.get(), "not", json_object_get(schema));
        good = good && !expected && json_validate_instance(data, negated.get()) == 0;
    }
    return good && text(group) == before;
}

// Without a draft, every group runs as it is.
void runFile(fs::path const& file, std::string const& draft, bool report, Count& count) {
    JsonRef const groups(json_object_from_file(file.c_str()));
    if (!json_object_is_type(groups.get(), json_type_array)) {
        printf("  %s: not an array of groups\n", file.c_str());
        ++count.cases;
        return;
    }
    for (size_t i = 0; i < json_object_array_length(groups.get()); ++i) {
        json_object* const group = json_object_array_get_idx(groups.get(), i);
        if (!draft.empty() && needsOtherDocument(member(group, "schema"), file)) {
            continue;
        }
        if (!draft.empty()) {
            declareDraft(member(group, "schema"), draft);
        }
        json_object* const tests = member(group, "tests");
        for (size_t j = 0; j < json_object_array_length(tests); ++j) {
            json_object* const test = json_object_array_get_idx(tests, j);
            bool const passed = passes(group, test);
            ++count.cases;
            count.passed += passed ? 1 : 0;
            if (!passed && report) {
                printf("  %s: %s: %s\n", file.filename().c_str(),
                       json_object_get_string(member(group, "description")),
                       json_object_get_string(member(test, "description")));
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    Count own;
    runFile(argc > 1 ? argv[1] : "", "", true, own);
    printf("own: %d of %d cases pass\n", own.passed, own.cases);
    bool good = own.passed == own.cases && own.cases > 0;
    fs::path const suite = "/usr/share/json-schema-test-suite/tests";
    if (!fs::exists(suite)) {
        puts("skipped: the package json-schema-test-suite is not installed");
        return good ? 77 : 1;
    }
    for (auto const& [draft, expected] : {std::pair("4", 301), {"6", 386}, {"7", 404}}) {
        Count required;
        Count optional;
        for (auto const& entry :
             fs::recursive_directory_iterator(suite / ("draft" + std::string(draft)))) {
            bool const isOptional = entry.path().string().find("/optional/") != std::string::npos;
            if (entry.path().extension() == ".json") {
                runFile(entry.path(), draft, !isOptional, isOptional ? optional : required);
            }
        }
        printf("draft %s: %d of %d required cases pass, %d of %d optional ones\n", draft,
               required.passed, required.cases, optional.passed, optional.cases);
        good = good && required.passed == required.cases && required.cases >= expected;
    }
    return good ? 0 : 1;
}
