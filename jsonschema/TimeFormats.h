// Dates and times, as RFC 3339 writes them.
#pragma once

#include <string_view>

namespace jsonschema {

bool isDate(std::string_view string);
bool isTime(std::string_view string);
bool isDateTime(std::string_view string);

}  // namespace jsonschema
