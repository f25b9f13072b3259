// The table of keywords: what each looks like, the function that applies it, and the one that says
// what it asks for.
#pragma once

#include <json-c/json.h>

namespace jsonschema {

class Evaluation;
class Text;
struct Instruction;
struct Place;

// What the value of a keyword must look like, and what becomes of it in an Instruction.
enum class Form {
    ANY,
    STRING,
    FORMAT,
    PATTERN,  // a string that compiles
    BOOLEAN,
    NUMBER,
    NUMBER_OR_BOOLEAN,  // the exclusive limits: a limit, or a flag beside one
    POSITIVE_NUMBER,
    COUNT,    // a whole number, not negative
    TYPES,    // the name of a type, or an array of them
    STRINGS,  // an array of strings
    VALUES,   // an array
    REFERENCE,
    SCHEMA,
    SCHEMA_OR_BOOLEAN,  // Boolean in every draft
    SCHEMAS,            // an array of schemas, not empty
    ITEMS,              // a schema, or an array of them
    SCHEMA_MAP,         // an object of schemas
    PATTERN_MAP,        // the same, under patterns
    DEPENDENCIES,       // an object of schemas and of arrays of strings
};

// One keyword at work on an instance.
struct Application {
    Evaluation& evaluation;
    json_object* instance;
    json_type type;  // of the instance
    Place const& place;
    Instruction const* instruction;
};

struct Keyword {
    char const* name;
    int firstDraft;
    Form form;
    bool (*holds)(Application const&);  // null: it says nothing by itself
    // Writes what it asks for: "must be at most 5". Null where the faults are those of its schemas.
    void (*describe)(Instruction const&, json_object* refused, Text&);
    char const* siblings[2] = {};  // other keywords of the same schema that it needs to know
};

// The keyword of that name in a draft; null when there is none.
Keyword const* findKeyword(char const* name, int draft);

// Stands for the schema that nothing satisfies, and has no name.
extern Keyword const NEVER;

// "dependencies" where it names members.
extern Keyword const DEPENDENT_NAMES;

}  // namespace jsonschema
