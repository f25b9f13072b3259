// Compares values as JSON: 1 equals 1.0, and the order of members does not count.
#ifndef JSONSCHEMA_EQUALITY_H
#define JSONSCHEMA_EQUALITY_H

#include <json-c/json.h>

#include "jsonschema/Budget.h"

namespace jsonschema {

bool areEqual(json_object* a, json_object* b, Budget& budget);

// Whether all elements of an array differ from each other. Takes about n log n time.
bool areUnique(json_object* array, Budget& budget);

}  // namespace jsonschema

#endif
