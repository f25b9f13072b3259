// Typed reading of configuration members. The logger is not set up yet: failures go to standard
// output directly.
#include "settings/ConfigTable.h"

#include <stdio.h>

#include <new>

namespace vobiutils {

namespace {

bool readNumber(json_object* value, int& destination) {
    switch (json_object_get_type(value)) {
        case json_type_int: destination = json_object_get_int(value); return true;
        case json_type_boolean: destination = json_object_get_boolean(value) ? 1 : 0; return true;
        default: puts("Configuration error, parameter MUST be integer or boolean"); return false;
    }
}

bool readText(json_object* value, std::string& destination) {
    if (!json_object_is_type(value, json_type_string)) {
        puts("Configuration error, parameter MUST be string");
        return false;
    }
    try {
        destination = json_object_get_string(value);
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

}  // namespace

void readRow(json_object* object, ConfigRow const& row) {
    json_object* value = nullptr;
    json_object_object_get_ex(object, row.key, &value);
    bool const read =
        row.text != nullptr ? readText(value, *row.text) : readNumber(value, *row.number);
    if (!read) {
        printf("Configuration is wrong, use default value for %s\n", row.key);
    }
}

void prepend(std::string const& prefix, std::string& text) {
    try {
        text.insert(0, prefix);
    } catch (std::exception const&) {
    }
}

}  // namespace vobiutils
