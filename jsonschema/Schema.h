// A compiled schema: a graph of nodes, one for each schema in the document, whose instructions are
// applied without looking at the document again.
#pragma once

#include <json-c/json.h>

#include <string_view>

#include "jsonschema/Arena.h"
#include "jsonschema/Keyword.h"

namespace jsonschema {

class NameMap;
class Number;
class Pattern;
struct Format;
struct Node;

// A keyword of a schema. What its value became depends on the form of the keyword.
struct Instruction {
    Keyword const* keyword = nullptr;
    union {
        Node const* schema = nullptr;   // SCHEMA, REFERENCE, ITEMS
        Node const* const* schemas;     // SCHEMAS; ITEMS where isList
        NameMap* map;                   // SCHEMA_MAP, PATTERN_MAP, DEPENDENCIES
        std::string_view const* names;  // STRINGS
        json_object* value;             // ANY, VALUES
        Number const* number;           // NUMBER and the like; null where it is Boolean
        Pattern const* pattern;
        Format const* format;  // null where it is unknown
    };
    size_t count = 0;  // of schemas or names; COUNT; BOOLEAN: 0 or 1; TYPES: a bit for each type
    bool isList = false;
    bool isMerged = false;                // into "properties", except when faults are looked for
    Instruction const* siblings[2] = {};  // those of the keyword; null where there is none
};

// Where a schema is in the document: below a keyword of its parent.
struct Location {
    Node const* parent = nullptr;  // null for the document itself
    char const* keyword = nullptr;
    char const* name = nullptr;  // in a map; without a keyword, a JSON pointer
    int index = -1;              // in an array
};

struct Node {
    Location location;
    Instruction const* instructions = nullptr;
    size_t count = 0;
    // intended: members that say nothing, as unknown keywords, cost a step each: what is decided
    // within the limits does not depend on which keywords are known
    size_t silentCount = 0;
};

// Owns all that a compiled schema consists of.
class Schema {
  public:
    Schema() = default;
    Schema(char* buffer, size_t size) : arena(buffer, size) {}  // uses the buffer first
    ~Schema();
    Schema(Schema const&) = delete;
    Schema& operator=(Schema const&) = delete;

    Arena arena;
    Node const* root = nullptr;
    Pattern* lastPattern = nullptr;
    json_object* values = nullptr;  // an array of those that were copied
};

}  // namespace jsonschema
