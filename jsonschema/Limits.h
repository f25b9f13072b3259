// What one call may use up. Beyond any of these nothing is decided, and the instance is invalid.
// What they mean to users is in README.md.
#ifndef JSONSCHEMA_LIMITS_H
#define JSONSCHEMA_LIMITS_H

#include <stddef.h>

namespace jsonschema {

namespace limits {

// Schemas inside schemas and values inside values, one counted on top of the other, references
// followed included.
int const DEPTH = 160;

// Steps: about one per keyword applied, member looked up, value compared and part of a pattern tried.
size_t const STEPS = 1000000;

size_t const PATTERN_LENGTH = 4096;    // bytes
size_t const PATTERN_NESTING = 32;     // groups inside groups
size_t const PATTERN_LOOKBEHIND = 32;  // characters
size_t const PATTERN_MEMORY = 4096;    // KiB that one match may take
size_t const REFERENCE_LENGTH = 2048;  // bytes of a "$ref" or "$id"

}  // namespace limits

}  // namespace jsonschema

#endif
