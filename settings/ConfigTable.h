// The rows of a configuration file, {key, destination}, and the two typed readers behind them.
#ifndef VOBIUTILS_SETTINGS_CONFIGTABLE_H
#define VOBIUTILS_SETTINGS_CONFIGTABLE_H

#include <json-c/json.h>

#include <string>

namespace vobiutils {

struct ConfigRow {
    ConfigRow(char const* name, std::string& destination) : key(name), text(&destination) {}
    ConfigRow(char const* name, int& destination) : key(name), number(&destination) {}

    char const* key;
    std::string* text = nullptr;  // one of the two is set
    int* number = nullptr;
};

// Reads one row from `object`; reports a failure on standard output and leaves the destination.
void readRow(json_object* object, ConfigRow const& row);

template <size_t N>
void readRows(json_object* object, ConfigRow const (&rows)[N]) {
    for (ConfigRow const& row : rows) {
        readRow(object, row);
    }
}

// Leaves the text as it is when there is no memory.
void prepend(std::string const& prefix, std::string& text);

}  // namespace vobiutils

#endif
