/*
 * Validation of json-c values against JSON Schemas.
 *
 * Both functions return non-zero when the instance satisfies the schema and 0 otherwise. They own
 * and change nothing they are given, keep no state, and may be called from any thread.
 */
#ifndef JSONSCHEMA_H
#define JSONSCHEMA_H

#include <json-c/json.h>

#pragma GCC visibility push(default)

#ifdef __cplusplus
extern "C" {
#endif

/* A null instance is JSON null; a null schema is satisfied by nothing. */
int json_validate_instance(json_object* instance, json_object* schema);

/* The same for two files; 0 when either cannot be read or parsed. */
int json_validate_instance_from_file(char const* instance_file, char const* schema_file);

#ifdef __cplusplus
}
#endif

#pragma GCC visibility pop

#endif
