// Reads configuration members by type. The logger is not set up yet at that time, so failures are
// printed on standard output.
#include "settings/ConfigTable.h"

#include <stdio.h>
#include <string.h>

#include <exception>
#include <string_view>
#include <utility>

namespace vobiutils {

namespace {

bool readNumber(json_object* value, int& destination) {
    switch (json_object_get_type(value)) {
        case json_type_int: destination = json_object_get_int(value); return true;
        case json_type_boolean: destination = json_object_get_boolean(value) ? 1 : 0; return true;
        default: puts("Configuration error, parameter MUST be integer or boolean"); return false;
    }
}

// Makes `destination` the one string and the other. False, with nothing changed, when memory runs
// out. By moves and copies of bytes, as the functions of std::string that replace a part of one have
// 640 bytes on MIPS.
bool join(std::string& destination, std::string_view one, std::string_view other) {
    try {
        std::string joined(one.size() + other.size(), '\0');
        memcpy(joined.data(), one.data(), one.size());
        memcpy(joined.data() + one.size(), other.data(), other.size());
        destination = std::move(joined);
        return true;
    } catch (std::exception const&) {
        return false;
    }
}

bool readString(json_object* value, std::string& destination) {
    if (!json_object_is_type(value, json_type_string)) {
        puts("Configuration error, parameter MUST be string");
        return false;
    }
    return join(destination, json_object_get_string(value), "");
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

void prepend(std::string const& prefix, std::string& string) { join(string, prefix, string); }

}  // namespace vobiutils
