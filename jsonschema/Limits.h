// The limits of one validation call. A call that exceeds one is undecided, and the instance counts
// as invalid. README.md explains them to users.
#pragma once

#include <stddef.h>

namespace jsonschema {

namespace limits {

// Nested schemas plus nested values, including the references followed.
int const DEPTH = 160;

// Steps: about one for each keyword applied, member looked up, value compared and item of a pattern
// tried.
size_t const STEPS = 1000000;

size_t const PATTERN_LENGTH = 4096;    // bytes
size_t const PATTERN_NESTING = 32;     // groups inside groups
size_t const PATTERN_LOOKBEHIND = 32;  // characters
size_t const PATTERN_MEMORY = 4096;    // KiB that one match may take
size_t const REFERENCE_LENGTH = 2048;  // bytes of a "$ref" or "$id"

}  // namespace limits

}  // namespace jsonschema
