// Reads members of a configuration object into settings: a row {key, destination} for each.
#pragma once

#include <json-c/json.h>

#include <string>

namespace vobiutils {

struct ConfigRow {
    ConfigRow(char const* name, std::string& destination) : key(name), string(&destination) {}
    ConfigRow(char const* name, int& destination) : key(name), number(&destination) {}

    char const* key;
    std::string* string = nullptr;  // exactly one of the two is set
    int* number = nullptr;
};

// Reads one row from `object`. A member that is missing or has the wrong type is reported on
// standard output and leaves the destination unchanged.
void readRow(json_object* object, ConfigRow const& row);

template <size_t N>
void readRows(json_object* object, ConfigRow const (&rows)[N]) {
    for (ConfigRow const& row : rows) {
        readRow(object, row);
    }
}

// Inserts `prefix` before `string`, which stays unchanged when memory runs out.
void prepend(std::string const& prefix, std::string& string);

}  // namespace vobiutils
