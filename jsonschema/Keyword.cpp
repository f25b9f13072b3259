// The table of keywords, and the way to find one in it.
#include "jsonschema/Keyword.h"

#include <string.h>

#include "jsonschema/KeywordFunctions.h"
#include "jsonschema/Messages.h"

namespace jsonschema {

Keyword const NEVER = {"", 0, Form::ANY, keywords::never, messages::notAllowed};

Keyword const DEPENDENT_NAMES = {"dependencies", 4, Form::STRINGS, keywords::required,
                                 messages::required};

namespace {

constexpr Keyword KEYWORDS[] = {
    {"$id", 6, Form::STRING, nullptr, nullptr},
    {"$ref", 4, Form::REFERENCE, keywords::reference, nullptr},
    {"additionalItems", 4, Form::SCHEMA_OR_BOOLEAN, keywords::additionalItems, nullptr, {"items"}},
    {"additionalProperties",
     4,
     Form::SCHEMA_OR_BOOLEAN,
     keywords::additionalProperties,
     nullptr,
     {"properties", "patternProperties"}},
    {"allOf", 4, Form::SCHEMAS, keywords::allOf, nullptr},
    {"anyOf", 4, Form::SCHEMAS, keywords::anyOf, nullptr},
    {"const", 6, Form::ANY, keywords::isConst, messages::isConst},
    {"contains", 6, Form::SCHEMA, keywords::contains, messages::contains},
    {"definitions", 4, Form::SCHEMA_MAP, nullptr, nullptr},
    {"dependencies", 4, Form::DEPENDENCIES, keywords::dependencies, nullptr},
    {"else", 7, Form::SCHEMA, nullptr, nullptr},
    {"enum", 4, Form::VALUES, keywords::isEnum, messages::isEnum},
    {"exclusiveMaximum", 4, Form::NUMBER_OR_BOOLEAN, keywords::exclusiveMaximum,
     messages::exclusiveMaximum},
    {"exclusiveMinimum", 4, Form::NUMBER_OR_BOOLEAN, keywords::exclusiveMinimum,
     messages::exclusiveMinimum},
    {"format", 4, Form::FORMAT, keywords::format, messages::format},
    {"id", 4, Form::ANY, nullptr, nullptr},
    {"if", 7, Form::SCHEMA, keywords::ifThenElse, nullptr, {"then", "else"}},
    {"items", 4, Form::ITEMS, keywords::items, nullptr},
    {"maxItems", 4, Form::COUNT, keywords::maxItems, messages::maxItems},
    {"maxLength", 4, Form::COUNT, keywords::maxLength, messages::maxLength},
    {"maxProperties", 4, Form::COUNT, keywords::maxProperties, messages::maxProperties},
    {"maximum", 4, Form::NUMBER, keywords::maximum, messages::maximum, {"exclusiveMaximum"}},
    {"minItems", 4, Form::COUNT, keywords::minItems, messages::minItems},
    {"minLength", 4, Form::COUNT, keywords::minLength, messages::minLength},
    {"minProperties", 4, Form::COUNT, keywords::minProperties, messages::minProperties},
    {"minimum", 4, Form::NUMBER, keywords::minimum, messages::minimum, {"exclusiveMinimum"}},
    {"multipleOf", 4, Form::POSITIVE_NUMBER, keywords::multipleOf, messages::multipleOf},
    {"not", 4, Form::SCHEMA, keywords::isNot, messages::notAllowed},
    {"oneOf", 4, Form::SCHEMAS, keywords::oneOf, messages::oneOf},
    {"pattern", 4, Form::PATTERN, keywords::pattern, messages::pattern},
    {"patternProperties", 4, Form::PATTERN_MAP, keywords::patternProperties, nullptr},
    {"properties",
     4,
     Form::SCHEMA_MAP,
     keywords::properties,
     nullptr,
     {"additionalProperties", "required"}},
    {"propertyNames", 6, Form::SCHEMA, keywords::propertyNames, nullptr},
    {"required", 4, Form::STRINGS, keywords::required, messages::required},
    {"then", 7, Form::SCHEMA, nullptr, nullptr},
    {"type", 4, Form::TYPES, keywords::type, messages::type},
    {"uniqueItems", 4, Form::BOOLEAN, keywords::uniqueItems, messages::uniqueItems},
};

constexpr unsigned int SLOTS = 128;

// A hash of the first four characters. The weights were found by search: with them only four slots
// hold two keywords.
constexpr unsigned int slotOf(char const* name) {
    unsigned int const weights[] = {10, 44, 57, 53};
    unsigned int slot = 0;
    for (int i = 0; i < 4 && name[i] != '\0'; ++i) {
        slot += weights[i] * static_cast<unsigned char>(name[i]);
    }
    return slot % SLOTS;
}

// For each slot, one plus the index of a keyword in KEYWORDS, or 0. Collisions go to the next free
// slot.
struct Index {
    unsigned char numbers[SLOTS] = {};

    constexpr Index() {
        unsigned char number = 0;
        for (Keyword const& keyword : KEYWORDS) {
            unsigned int slot = slotOf(keyword.name);
            while (numbers[slot] != 0) {
                slot = (slot + 1) % SLOTS;
            }
            numbers[slot] = ++number;
        }
    }
};

constexpr Index INDEX;

}  // namespace

Keyword const* findKeyword(char const* name, int draft) {
    for (unsigned int slot = slotOf(name); INDEX.numbers[slot] != 0; slot = (slot + 1) % SLOTS) {
        Keyword const& keyword = KEYWORDS[INDEX.numbers[slot] - 1];
        if (strcmp(keyword.name, name) == 0) {
            return keyword.firstDraft <= draft ? &keyword : nullptr;
        }
    }
    return nullptr;
}

}  // namespace jsonschema
