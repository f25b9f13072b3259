// Compares values as JSON: 1 equals 1.0, and the order of members does not count.
#pragma once

#include <json-c/json.h>

#include "jsonschema/Budget.h"

namespace jsonschema {

bool areEqual(json_object* a, json_object* b, Budget& budget);

// The index of the first element that equals an earlier one; the length when all differ. Takes time
// in proportion to the size of the array.
size_t firstRepeated(json_object* array, Budget& budget);

}  // namespace jsonschema
