// The functions in the table of keywords that say what a keyword asks for.
#pragma once

#include "jsonschema/Keyword.h"

namespace jsonschema {

namespace messages {

typedef void Describe(Instruction const&, json_object*, Text&);

Describe type, isConst, isEnum, minimum, maximum, exclusiveMinimum, exclusiveMaximum, multipleOf,
    minLength, maxLength, pattern, format, minItems, maxItems, uniqueItems, contains, minProperties,
    maxProperties, required, oneOf, notAllowed;

}  // namespace messages

}  // namespace jsonschema
