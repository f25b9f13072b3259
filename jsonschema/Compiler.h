// Reads a schema once: checks the form of every keyword, also of those that no instance reaches,
// compiles the patterns, resolves the references, and leaves nodes that are ready to apply.
#pragma once

#include "jsonschema/Budget.h"
#include "jsonschema/NameMap.h"
#include "jsonschema/Schema.h"
#include "jsonschema/Uri.h"

namespace jsonschema {

// What is wrong with a schema, and where.
struct Malformation {
    Location at;
    char const* expected = nullptr;  // "a number"; null when no place is known
};

class Compiler {
  public:
    // With `copies` the schema does without the document afterwards. Otherwise it refers to it.
    Compiler(Schema& schema, Budget& budget, bool copies)
        : schema_(schema), budget_(budget), copies_(copies) {}

    // False for a schema that is malformed, or, with a budget that is used up, too large.
    bool compile(json_object* document);

    Malformation const& malformation() const { return malformation_; }

  private:
    // Where a node comes from, and what is known of it only while compiling.
    struct Source {
        Node* node;
        json_object* document;
        Source* parent;
        Source* next;
        std::string_view base;           // of the references inside
        std::string_view referenceText;  // of a "$ref"
        Instruction* reference;
    };
    struct Identified {
        std::string_view uri;
        Source const* source;
        Identified* next;
    };

    // Compiler.cpp. Each is false, or null, for what is malformed.
    Node const* readSchema(json_object* document, Location const& at, Source* parent);
    bool readKeywords(Source& source);
    bool readKeyword(Source& source, Instruction& instruction, json_object* operand);
    bool readSchemas(Source& source, Instruction& instruction, json_object* array);
    bool readMap(Source& source, Instruction& instruction, json_object* map);
    bool readEntry(Source& source, Keyword const& keyword, lh_entry* member, NameMap::Entry& entry);
    Node const* readDependentNames(Source& source, json_object* names);
    Node const* constant(bool value, Location const& at);
    bool note(Location const& at, char const* expected);

    // Operands.cpp: the values of keywords that are not schemas. The same.
    bool readTypes(Instruction& instruction, json_object* operand);
    bool readNames(Instruction& instruction, json_object* array);
    bool readNumber(Instruction& instruction, json_object* operand);
    bool readCount(Instruction& instruction, json_object* operand);
    bool readValue(Instruction& instruction, json_object* operand);
    Pattern const* readPattern(std::string_view text);
    json_object* copyOf(json_object* value);
    void copyContent(json_object* container, json_object& copy);
    std::string_view kept(std::string_view string);  // as long as the schema

    // References.cpp.
    bool resolveReferences();
    void identify(Source& source);
    bool resolve(Source& source);
    Node const* target(std::string_view uri);
    Node const* nodeOf(json_object* document) const;
    Node const* readTarget(json_object* document, Node const& base, UriParts const& uri);

    template <typename T>
    T* made(T* memory) {  // null only with a budget that is used up
        if (memory == nullptr) {
            budget_.giveUp();
        }
        return memory;
    }

    Schema& schema_;
    Budget& budget_;
    bool const copies_;
    int draft_ = 7;
    bool hasReferences_ = false;
    Malformation malformation_;
    alignas(Arena::ALIGNMENT) char buffer_[1000];
    Arena scratch_{buffer_, sizeof buffer_};  // for what is needed only while compiling
    Source* first_ = nullptr;
    Source* last_ = nullptr;
    size_t sources_ = 0;
    Identified* firstIdentified_ = nullptr;
    Identified* lastIdentified_ = nullptr;
    size_t identifiers_ = 0;
    std::string_view base_;  // of the schema that is read next without a parent
};

}  // namespace jsonschema
