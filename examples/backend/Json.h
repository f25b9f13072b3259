// JSON values that release themselves, and the strict reading of what clients send.
#ifndef BACKEND_JSON_H
#define BACKEND_JSON_H

#include <json-c/json.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

struct JsonRelease {
    void operator()(json_object* value) const { json_object_put(value); }
};
typedef std::unique_ptr<json_object, JsonRelease> Json;

// Exactly one JSON value, nested to half of what a file may hold, in UTF-8, its numbers finite and its
// texts without the character 0. Null for anything else, JSON null included.
Json parseJson(std::string const& text);

Json copyOf(json_object* value);
std::string textOf(json_object* value);

// What a value of any type holds. A data file may be damaged, and json-c's own loops crash on a value of
// another type than they expect. The results are borrowed; null stands for JSON null.
typedef std::vector<std::pair<char const*, json_object*>> Members;
std::vector<json_object*> elementsOf(json_object* value);    // empty unless it is an array
Members membersOf(json_object* value);                       // empty unless it is an object
char const* stringAt(json_object* value, char const* name);  // null unless the member is a string

// Lays the members of `change` over those of the object `target`, object by object.
void merge(json_object* target, json_object* change);

#endif
