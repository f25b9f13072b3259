// The messages that requests stand for: which one belongs to which place of the databases. And what is
// answered to one that is not valid, or would make a database invalid.
//
// A refusal for a fault is {"error": message, "hint": ..., "path": ..., "keyword": ..., "in": "body" or
// "database", "type": ...}. "in" and the API type say what the path leads into; the hint is the schema's
// description of the value, if it has one.
#ifndef BACKEND_MESSAGES_H
#define BACKEND_MESSAGES_H

#include <LocalDbTransaction.h>

#include <string>

#include "Reply.h"

// The message that changes exactly this place, or the one that it is read by, as a name of the label tables;
// null when it is a plain value.
char const* messageOf(std::string const& method, unsigned int type, std::string const& path);

// The file beside a database that says what its document may be.
std::string schemaFileOf(unsigned int type);

// Throws the refusal of a body that is not that message, by its schema file: 400, and 500 when that cannot be
// used. Any is valid when there is no such file.
void requireRequest(unsigned int type, char const* label, TreeMapObject& body);

// Throws 500 for an answer that is not that message, where BEConfig::VALIDATION_ON_RESPONSE wants to know.
void requireResponse(unsigned int type, char const* label, TreeMapObject& value);

// Says why a changed database was not saved: 400, and 500 when it was not valid before the change, or its
// schema file cannot be used.
Reply refuseDocument(LocalDbTransaction::Fault const& fault);

#endif
