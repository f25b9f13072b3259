// Dates and times, as RFC 3339 writes them.
#ifndef JSONSCHEMA_TIMEFORMATS_H
#define JSONSCHEMA_TIMEFORMATS_H

#include <string_view>

namespace jsonschema {

bool isDate(std::string_view string);
bool isTime(std::string_view string);
bool isDateTime(std::string_view string);

}  // namespace jsonschema

#endif
