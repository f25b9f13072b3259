// Reads configuration members by type. The logger is not set up yet at that time, so failures are
// printed on standard output.
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

bool readString(json_object* value, std::string& destination) {
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
        row.string != nullptr ? readString(value, *row.string) : readNumber(value, *row.number);
    if (!read) {
        printf("Configuration is wrong, use default value for %s\n", row.key);
    }
}

void prepend(std::string const& prefix, std::string& string) {
    try {
        string.insert(0, prefix);
    } catch (std::exception const&) {
    }
}

}  // namespace vobiutils
