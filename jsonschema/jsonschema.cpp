// No keyword is understood yet. What cannot be decided is invalid, so every instance is refused.
#include "jsonschema.h"

extern "C" int json_validate_instance(json_object*, json_object*) { return 0; }

extern "C" int json_validate_instance_from_file(char const*, char const*) { return 0; }
