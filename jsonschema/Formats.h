// The keyword "format": tests strings for dates, addresses, URIs and the like.
#ifndef JSONSCHEMA_FORMATS_H
#define JSONSCHEMA_FORMATS_H

#include <string_view>

#include "jsonschema/Budget.h"

namespace jsonschema {

// Whether `string` has the format called `format`. True for an unknown format.
bool hasFormat(std::string_view string, std::string_view format, Budget& budget);

}  // namespace jsonschema

#endif
