// JSON values that release themselves, and the strict reading of what clients send.
#ifndef BACKEND_JSON_H
#define BACKEND_JSON_H

#include <json-c/json.h>

#include <memory>
#include <string>

struct JsonRelease {
    void operator()(json_object* value) const { json_object_put(value); }
};
typedef std::unique_ptr<json_object, JsonRelease> Json;

// Exactly one JSON value, nested to half of what a file may hold, in UTF-8, its numbers finite and its
// texts without the character 0. Null for anything else, JSON null included.
Json parseJson(std::string const& text);

Json copyOf(json_object* value);
std::string textOf(json_object* value);

// Lays the members of `change` over those of `target`, object by object.
void merge(json_object* target, json_object* change);

#endif
