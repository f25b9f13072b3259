// Runs the JSON Schema Test Suite, installed by Debian's package json-schema-test-suite: every required
// case that needs no other document must pass. Optional cases are only counted.
#include <jsonschema.h>
#include <stdio.h>
#include <string.h>

#include <filesystem>
#include <string>

#include "JsonRef.h"

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

bool needsOtherDocument(json_object* schema, fs::path const& file) {
    char const* const text = json_object_to_json_string_ext(schema, JSON_C_TO_STRING_NOSLASHESCAPE);
    return file.filename() == "refRemote.json" ||
           strstr(text, "\"$ref\":\"http://json-schema.org/draft-") != nullptr;
}

// The suite leaves the draft to the folder.
void declareDraft(json_object* schema, std::string const& draft) {
    if (json_object_is_type(schema, json_type_object) && member(schema, "$schema") == nullptr) {
        std::string const uri = "http://json-schema.org/draft-0" + draft + "/schema#";
        json_object_object_add(schema, "$schema", json_object_new_string(uri.c_str()));
    }
}

void runGroup(json_object* group, std::string const& name, bool report, Count& count) {
    json_object* const tests = member(group, "tests");
    for (size_t i = 0; i < json_object_array_length(tests); ++i) {
        json_object* const test = json_object_array_get_idx(tests, i);
        bool const expected = json_object_get_boolean(member(test, "valid")) != 0;
        bool const valid =
            json_validate_instance(member(test, "data"), member(group, "schema")) != 0;
        ++count.cases;
        count.passed += valid == expected ? 1 : 0;
        if (valid != expected && report) {
            printf("  %s: %s: %s\n", name.c_str(),
                   json_object_get_string(member(group, "description")),
                   json_object_get_string(member(test, "description")));
        }
    }
}

void runFile(fs::path const& file, std::string const& draft, bool report, Count& count) {
    JsonRef const groups(json_object_from_file(file.c_str()));
    for (size_t i = 0; i < json_object_array_length(groups.get()); ++i) {
        json_object* const group = json_object_array_get_idx(groups.get(), i);
        if (!needsOtherDocument(member(group, "schema"), file)) {
            declareDraft(member(group, "schema"), draft);
            runGroup(group, file.filename(), report, count);
        }
    }
}

}  // namespace

int main() {
    fs::path const suite = "/usr/share/json-schema-test-suite/tests";
    if (!fs::exists(suite)) {
        puts("skipped: the package json-schema-test-suite is not installed");
        return 77;
    }
    bool good = true;
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
