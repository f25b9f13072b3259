// The messages that requests stand for: which one belongs to which place of the databases. And what is
// answered to one that is not valid, or would make a database invalid.
#ifndef BACKEND_MESSAGES_H
#define BACKEND_MESSAGES_H

#include <CompiledSchema.h>
#include <LocalDbCtrl.h>
#include <TreeMapObject.h>

#include <optional>
#include <string>

#include "Reply.h"

struct Message {
    char const* method;
    API_TYPE_T type;
    char const* place;    // as a path, "[]" for any element
    char const* request;  // names of the label tables
    char const* response;
};

// The message of a request to exactly this place; null when it is a plain value.
Message const* messageOf(char const* method, unsigned int type, std::string const& path);

// The file beside a database that says what its document may be.
std::string schemaFileOf(unsigned int type);

bool isObject(TreeMapObject const& value);

// Whether a value is the message of that name, by its schema file. Any is, when there is no such file.
bool isValid(unsigned int type, char const* label, TreeMapObject& value);

// A refusal for a fault is {"error": message, "hint": ..., "path": ..., "keyword": ..., "in": "body" or
// "database"}. "in" says what the path leads into; the hint is the schema's description of the value, if it
// has one.

// Why a body is not that message, if so: 400, and 500 when the schema file cannot be used.
std::optional<Reply> refuseMessage(unsigned int type, char const* label, TreeMapObject& body);

// Says why a changed database was not saved: 400, and 500 when it was not valid before the change, or its
// schema file cannot be used.
Reply refuseDocument(unsigned int type, CompiledSchema::Fault const& fault);

#endif
