// The keyword "format": tests strings for dates, addresses, URIs and the like.
#pragma once

#include <string_view>

#include "jsonschema/Budget.h"

namespace jsonschema {

struct Format {
    char const* name;
    char const* description;         // "an IPv4 address"
    bool (*test)(std::string_view);  // null for a pattern
};

// Null for an unknown format.
Format const* findFormat(std::string_view name);

bool hasFormat(std::string_view string, Format const& format, Budget& budget);

}  // namespace jsonschema
