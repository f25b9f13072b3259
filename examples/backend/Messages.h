// The messages that requests stand for: which one belongs to which place of the databases, and
// whether what a client sends, or is sent, is one.
#ifndef BACKEND_MESSAGES_H
#define BACKEND_MESSAGES_H

#include <LocalDbCtrl.h>
#include <TreeMapObject.h>
#include <json-c/json.h>

#include <string>

#include "Json.h"
#include "Path.h"

struct Message {
    char const* method;
    API_TYPE_T type;
    char const* place;    // as a path, "[]" for any element
    char const* request;  // names of the label tables
    char const* response;
};

// The message of a request to exactly this place; null when it is a plain value.
Message const* messageOf(char const* method, unsigned int type, Path const& path);

// Whether the message named `label` has a schema file, what stands in it, and whether the value is
// valid by it.
bool hasSchema(unsigned int type, char const* label);
Json schemaOf(unsigned int type, char const* label);
bool isValid(unsigned int type, char const* label, json_object* value);

// Whether the schema and the form of the message are objects, where it has them. If not, nothing is valid,
// and it is not the client's fault.
bool hasUsableFiles(unsigned int type, char const* label);

// A change at `path` may touch the places of several messages. Each must still give a valid one: of
// a message that changes something, the message file is a form that is filled in from the document;
// of one that is only read, the value is the response. The name of the first message that would not
// be valid; null when all are.
char const* brokenMessage(unsigned int type, TreeMapObject& document, Path const& path);

#endif
