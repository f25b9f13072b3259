// Whether values are equal as JSON: 1 is 1.0, the order of members does not count.
#ifndef JSONSCHEMA_EQUALITY_H
#define JSONSCHEMA_EQUALITY_H

#include <json-c/json.h>

#include "jsonschema/Budget.h"

namespace jsonschema {

bool areEqual(json_object* a, json_object* b, Budget& budget);

// Whether the elements of an array all differ from each other; near-linear in their size.
bool areUnique(json_object* array, Budget& budget);

}  // namespace jsonschema

#endif
