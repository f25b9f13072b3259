// Reads groups, a line each: {"schema": ..., "instances": [...]}. Writes a line for each, an array
// with null for an instance that is valid, and its fault for one that is not.
#include <jsonschema.h>

#include <iostream>
#include <string>

int main() {
    for (std::string line; std::getline(std::cin, line);) {
        json_object* const group = json_tokener_parse(line.c_str());
        json_object* const instances = json_object_object_get(group, "instances");
        json_object* const verdicts = json_object_new_array();
        json_schema_fault fault = {};
        json_schema* const schema =
            json_schema_compile(json_object_object_get(group, "schema"), &fault);
        for (size_t i = 0; i < json_object_array_length(instances); ++i) {
            json_object* verdict = nullptr;
            json_object* const instance = json_object_array_get_idx(instances, i);
            if (schema == nullptr || json_schema_check(schema, instance, &fault) == 0) {
                verdict = json_object_new_object();
                json_object_object_add(verdict, "path", json_object_new_string(fault.path));
                json_object_object_add(verdict, "keyword", json_object_new_string(fault.keyword));
                json_object_object_add(verdict, "message", json_object_new_string(fault.message));
            }
            json_object_array_add(verdicts, verdict);
        }
        std::cout << json_object_to_json_string_ext(verdicts, JSON_C_TO_STRING_PLAIN) << '\n';
        json_schema_free(schema);
        json_object_put(verdicts);
        json_object_put(group);
    }
    return 0;
}
