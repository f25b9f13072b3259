// The table of keywords: what each looks like, and the function that applies it.
#ifndef JSONSCHEMA_KEYWORD_H
#define JSONSCHEMA_KEYWORD_H

#include <json-c/json.h>

namespace jsonschema {

class Evaluation;

// What the value of a keyword must look like.
enum class Form {
    ANY,
    TEXT,
    PATTERN,  // a text that compiles
    BOOLEAN,
    NUMBER,
    NUMBER_OR_BOOLEAN,  // the exclusive limits: a limit, or a flag beside one
    POSITIVE_NUMBER,
    COUNT,   // a whole number, not negative
    TYPES,   // the name of a type, or an array of them
    TEXTS,   // an array of texts
    VALUES,  // an array
    REFERENCE,
    SCHEMA,
    SCHEMA_OR_BOOLEAN,  // Boolean in every draft
    SCHEMAS,            // an array of schemas, not empty
    ITEMS,              // a schema, or an array of them
    SCHEMA_MAP,         // an object of schemas
    PATTERN_MAP,        // the same, under patterns
    DEPENDENCIES,       // an object of schemas and of arrays of texts
};

// One keyword at work: its value, the schema it stands in, and the instance.
struct Application {
    Evaluation& evaluation;
    json_object* operand;
    json_object* schema;
    json_object* instance;
};

struct Keyword {
    char const* name;
    int firstDraft;
    Form form;
    bool (*holds)(Application const&);  // null: it says nothing by itself
};

// The keyword of that name in a draft; null when there is none.
Keyword const* findKeyword(char const* name, int draft);

}  // namespace jsonschema

#endif
