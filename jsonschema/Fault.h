// Says to a user what was found: fills the fields of a json_schema_fault.
#pragma once

#include "jsonschema/Compiler.h"
#include "jsonschema/Finding.h"
#include "jsonschema/jsonschema.h"

namespace jsonschema {

// A fault of an instance. An empty finding is one that was not decided.
void describe(Finding const& finding, json_object* instance, json_schema_fault& fault);

// A schema that did not compile.
void describe(Malformation const& malformation, bool isUndecided, json_schema_fault& fault);

// A fault at no particular place.
void describe(char const* message, json_schema_fault& fault);

}  // namespace jsonschema
