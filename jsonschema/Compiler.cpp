// Reads a schema once, checks it, and makes nodes and instructions of it.
#include "jsonschema/Compiler.h"

#include <assert.h>

#include "jsonschema/Formats.h"
#include "jsonschema/Json.h"
#include "jsonschema/Siblings.h"

namespace jsonschema {

namespace {

constexpr Instruction NEVER_INSTRUCTION = {.keyword = &NEVER, .schema = nullptr};

// In the order of Form: what the value of a keyword must be.
char const* const EXPECTED[] = {
    "a value",
    "a string",
    "a string",
    "a valid pattern",
    "true or false",
    "a number",
    "a number, true or false",
    "a positive number",
    "a whole number, not negative",
    "the name of a type, or an array of them",
    "an array of strings",
    "an array",
    "a reference to a part of the schema",
    "a schema",
    "a schema",
    "an array of schemas, not empty",
    "a schema, or an array of them",
    "an object of schemas",
    "an object of schemas, named by valid patterns",
    "an object of schemas and of arrays of strings",
};

bool isBoolean(json_object* value) { return is(value, json_type_boolean); }
bool isString(json_object* value) { return is(value, json_type_string); }

// 7 where nothing else is declared.
int draftOf(json_object* document) {
    std::string_view uri = textOf(memberOf(document, "$schema"));
    if (!uri.empty() && uri.back() == '#') {
        uri.remove_suffix(1);
    }
    return uri == "http://json-schema.org/draft-04/schema"   ? 4
           : uri == "http://json-schema.org/draft-06/schema" ? 6
                                                             : 7;
}

}  // namespace

bool Compiler::compile(json_object* document) {
    draft_ = draftOf(document);
    schema_.root = readSchema(document, {}, nullptr);
    if (schema_.root == nullptr || (hasReferences_ && !resolveReferences()) ||
        budget_.isUndecided()) {
        schema_.root = nullptr;
    }
    return schema_.root != nullptr;
}

// Keeps the first malformation, which is the innermost one. Returns false.
bool Compiler::note(Location const& at, char const* expected) {
    if (malformation_.expected == nullptr) {
        malformation_ = {at, expected};
    }
    return false;
}

Node const* Compiler::readSchema(json_object* document, Location const& at, Source* parent) {
    Budget::Level const level(budget_);
    bool const isObject = is(document, json_type_object);
    if (!budget_.spend(1) || (!isObject && (draft_ < 6 || !isBoolean(document)))) {
        note(at, "a schema");
        return nullptr;
    }
    if (!isObject) {
        return constant(json_object_get_boolean(document) != 0, at);
    }
    Node* const node = made(schema_.arena.make<Node>());
    Source* const source = made(scratch_.make<Source>());
    if (node == nullptr || source == nullptr) {
        return nullptr;
    }
    node->location = at;
    *source = {node, document, parent, nullptr, base_, {}, nullptr};
    (last_ != nullptr ? last_->next : first_) = source;
    last_ = source;
    ++sources_;
    return readKeywords(*source) ? node : nullptr;
}

// The schema that everything satisfies, or nothing.
Node const* Compiler::constant(bool value, Location const& at) {
    Node* const node = made(schema_.arena.make<Node>());
    if (node != nullptr) {
        *node = {at, &NEVER_INSTRUCTION, value ? 0U : 1U};
    }
    return node;
}

bool Compiler::readKeywords(Source& source) {
    size_t const length = memberCount(source.document);
    Instruction* const first = made(schema_.arena.make<Instruction>(length));
    if (first == nullptr) {
        return false;
    }
    Instruction* next = first;
    Instruction* silent = first + length;  // those that say nothing by themselves come last
    for (lh_entry* at = firstMember(source.document); at != nullptr; at = lh_entry_next(at)) {
        Keyword const* const keyword = findKeyword(nameOf(at), draft_);
        if (!budget_.spend(1)) {
            return note({source.node}, "a schema");
        }
        if (keyword == nullptr) {
            continue;
        }
        Instruction& instruction = keyword->holds != nullptr ? *next++ : *--silent;
        instruction.keyword = keyword;
        if (!readKeyword(source, instruction, valueOf(at))) {
            return note({source.node, keyword->name}, EXPECTED[static_cast<int>(keyword->form)]);
        }
    }
    assert(first <= next && next <= silent && silent <= first + length);
    source.node->instructions = first;
    source.node->count = static_cast<size_t>(next - first);
    source.node->silentCount = length - source.node->count;
    if (source.reference != nullptr) {  // its siblings do not count
        *source.node = {source.node->location, source.reference, 1};
    }
    linkSiblings(first, first + length);
    mergeIntoProperties(first, first + length, budget_);
    return true;
}

bool Compiler::readKeyword(Source& source, Instruction& instruction, json_object* operand) {
    Location const at = {source.node, instruction.keyword->name};
    switch (instruction.keyword->form) {
        case Form::ANY: return readValue(instruction, operand);
        case Form::STRING: return isString(operand);
        case Form::FORMAT:
            instruction.format = findFormat(textOf(operand));
            return isString(operand);
        case Form::PATTERN:
            instruction.pattern = isString(operand) ? readPattern(textOf(operand)) : nullptr;
            return instruction.pattern != nullptr;
        case Form::BOOLEAN:
            instruction.count = json_object_get_boolean(operand) != 0 ? 1 : 0;
            return isBoolean(operand);
        case Form::NUMBER:
        case Form::NUMBER_OR_BOOLEAN:
        case Form::POSITIVE_NUMBER: return readNumber(instruction, operand);
        case Form::COUNT: return readCount(instruction, operand);
        case Form::TYPES: return readTypes(instruction, operand);
        case Form::STRINGS: return readNames(instruction, operand);
        case Form::VALUES: return is(operand, json_type_array) && readValue(instruction, operand);
        case Form::REFERENCE:
            source.reference = &instruction;
            source.referenceText = textOf(operand);
            hasReferences_ = true;
            return isString(operand);
        case Form::ITEMS:
            instruction.isList = is(operand, json_type_array);
            if (instruction.isList) {
                return readSchemas(source, instruction, operand);
            }
            [[fallthrough]];
        case Form::SCHEMA:
            instruction.schema = readSchema(operand, at, &source);
            return instruction.schema != nullptr;
        case Form::SCHEMA_OR_BOOLEAN:
            instruction.schema = isBoolean(operand)
                                     ? constant(json_object_get_boolean(operand) != 0, at)
                                     : readSchema(operand, at, &source);
            return instruction.schema != nullptr;
        case Form::SCHEMAS:
            return is(operand, json_type_array) && lengthOf(operand) > 0 &&
                   readSchemas(source, instruction, operand);
        case Form::SCHEMA_MAP:
        case Form::PATTERN_MAP:
        case Form::DEPENDENCIES: return readMap(source, instruction, operand);
    }
    return false;
}

bool Compiler::readSchemas(Source& source, Instruction& instruction, json_object* array) {
    size_t const length = lengthOf(array);
    Node const** const schemas = made(schema_.arena.make<Node const*>(length));
    for (size_t i = 0; i < length && schemas != nullptr; ++i) {
        Location const at = {source.node, instruction.keyword->name, nullptr, static_cast<int>(i)};
        schemas[i] = readSchema(elementOf(array, i), at, &source);
        if (schemas[i] == nullptr) {
            return false;
        }
    }
    instruction.schemas = schemas;
    instruction.count = length;
    return schemas != nullptr;
}

bool Compiler::readMap(Source& source, Instruction& instruction, json_object* map) {
    if (!is(map, json_type_object)) {
        return false;
    }
    NameMap* const entries = made(schema_.arena.make<NameMap>());
    if (entries == nullptr || !entries->reserve(memberCount(map), schema_.arena)) {
        budget_.giveUp();
        return false;
    }
    instruction.map = entries;
    for (lh_entry* at = firstMember(map); at != nullptr; at = lh_entry_next(at)) {
        NameMap::Entry entry;
        if (!readEntry(source, *instruction.keyword, at, entry)) {
            return false;
        }
        entries->add(entry, budget_);
    }
    return true;
}

bool Compiler::readEntry(Source& source, Keyword const& keyword, lh_entry* member,
                         NameMap::Entry& entry) {
    entry.name = kept(nameOf(member));
    if (entry.name.data() == nullptr) {
        return false;
    }
    Location const at = {source.node, keyword.name, entry.name.data()};
    if (keyword.form == Form::PATTERN_MAP) {
        entry.pattern = readPattern(entry.name);
        if (entry.pattern == nullptr) {
            return note(at, "named by a valid pattern");
        }
    }
    bool const isList = keyword.form == Form::DEPENDENCIES && is(valueOf(member), json_type_array);
    entry.schema = isList ? readDependentNames(source, valueOf(member))
                          : readSchema(valueOf(member), at, &source);
    return entry.schema != nullptr || note(at, "an array of strings");
}

// As a schema with nothing but a keyword like "required".
Node const* Compiler::readDependentNames(Source& source, json_object* names) {
    Node* const node = made(schema_.arena.make<Node>());
    Instruction* const instruction = made(schema_.arena.make<Instruction>());
    if (node == nullptr || instruction == nullptr || !readNames(*instruction, names)) {
        return nullptr;
    }
    instruction->keyword = &DEPENDENT_NAMES;
    *node = {{source.node}, instruction, 1};
    return node;
}

}  // namespace jsonschema
