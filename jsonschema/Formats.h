// The formats of texts.
#ifndef JSONSCHEMA_FORMATS_H
#define JSONSCHEMA_FORMATS_H

#include <string_view>

#include "jsonschema/Budget.h"

namespace jsonschema {

// Whether the text has the format; every text has an unknown one.
bool hasFormat(std::string_view text, std::string_view format, Budget& budget);

}  // namespace jsonschema

#endif
