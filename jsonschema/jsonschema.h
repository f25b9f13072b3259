/*
 * Validation of json-c values against JSON Schemas.
 *
 *     json_schema_fault fault;
 *     json_schema* schema = json_schema_compile(document, &fault);
 *     if (schema == NULL || !json_schema_check(schema, request, &fault)) {
 *         printf("%s %s\n", fault.path, fault.message);  // "rules.[2].port must be at most 65535"
 *     }
 *     json_schema_free(schema);
 *
 * The functions neither change nor keep what they are given, keep no state, and may be called from
 * any thread.
 */
#pragma once

#include <json-c/json.h>

#pragma GCC visibility push(default)

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Non-zero when the instance satisfies the schema, and 0 otherwise. A null instance is JSON null; a
 * null schema is satisfied by nothing.
 */
int json_validate_instance(json_object* instance, json_object* schema);

/* The same for two files; 0 when either cannot be read or parsed. */
int json_validate_instance_from_file(char const* instance_file, char const* schema_file);

/*
 * A schema made ready for any number of checks. It never changes, so any number of threads may share
 * it.
 */
typedef struct json_schema json_schema;

/*
 * Where and why a value was refused. Four NUL-terminated strings of valid UTF-8, cut where they do
 * not fit; a path is cut after a whole step.
 */
typedef struct json_schema_fault {
    char path[256];        /* of the value in the instance: "rules.[2].port"; "" for the instance */
    char keyword[32];      /* that refused the value: "maximum"; "schema" for none in particular */
    char message[160];     /* for a user: "must be at most 65535"; never contains the value */
    char schema_path[256]; /* of the keyword: a JSON pointer into the schema */
} json_schema_fault;

/*
 * Compiles a schema, to be released with json_schema_free; the document is not needed afterwards.
 * Null for a schema that is malformed, exceeds the limits, or finds no memory: the fault then says
 * where and why, with an empty path. The fault may be null, and is written only then.
 */
json_schema* json_schema_compile(json_object* document, json_schema_fault* fault);

/*
 * Non-zero when the instance satisfies the schema, and 0 otherwise, as json_validate_instance. With 0
 * the fault, which may be null, holds the first fault in the order of the instance, a container
 * before its members, and of one value the first in the order of the schema. Where no alternative of
 * an "anyOf" or "oneOf" holds, it is the fault of the alternative that got furthest. A null schema is
 * satisfied by nothing.
 */
int json_schema_check(json_schema const* schema, json_object* instance, json_schema_fault* fault);

/* Releases a schema, which no thread may be using. Null is ignored. */
void json_schema_free(json_schema* schema);

#ifdef __cplusplus
}
#endif

#pragma GCC visibility pop
