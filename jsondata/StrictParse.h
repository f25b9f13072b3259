// Strict parsing without a handle.
#pragma once

#include <string_view>

#include "JsonData.h"
#include "jsondata/JsonRef.h"

namespace vobiutils {

// Whether `text` is one JSON value, as JsonData::parse says: `value` then is that, null for JSON
// null. If it is not, `fault` says why.
bool parseStrictly(std::string_view text, JsonRef& value, JsonFault& fault);

}  // namespace vobiutils
