// What each keyword asks for, as the end of a sentence about the value: "must be at most 5".
#include "jsonschema/Messages.h"

#include "jsonschema/Budget.h"
#include "jsonschema/Equality.h"
#include "jsonschema/Formats.h"
#include "jsonschema/Json.h"
#include "jsonschema/KeywordFunctions.h"
#include "jsonschema/Number.h"
#include "jsonschema/Pattern.h"
#include "jsonschema/Schema.h"
#include "jsonschema/Text.h"

namespace jsonschema {

namespace messages {

namespace {

typedef Instruction const& Ins;

// "1 member", "2 members"
void addCount(Text& text, size_t count, char const* noun) {
    text.add(count).add(" ").add(noun).add(count != 1 ? "s" : "");
}

void atLeast(Ins instruction, Text& text, char const* noun) {
    if (instruction.count == 1) {
        text.add("must not be empty");
        return;
    }
    addCount(text.add("must have at least "), instruction.count, noun);
}

void atMost(Ins instruction, Text& text, char const* noun) {
    addCount(text.add("must have at most "), instruction.count, noun);
}

}  // namespace

void type(Ins instruction, json_object*, Text& text) {
    static constexpr struct {
        unsigned int bits;
        char const* name;
    } TYPES[] = {
        {1U << json_type_double, "a number"}, {1U << json_type_int, "a whole number"},
        {1U << json_type_string, "a string"}, {1U << json_type_boolean, "true or false"},
        {1U << json_type_array, "an array"},  {1U << json_type_object, "an object"},
        {1U << json_type_null, "null"},
    };
    char const* separator = "must be ";
    size_t types = instruction.count;
    for (auto const& type : TYPES) {
        if ((types & type.bits) == 0) {
            continue;
        }
        if (type.bits == 1U << json_type_double) {
            types &= ~size_t{1U << json_type_int};  // a number may be whole
        }
        text.add(separator).add(type.name);
        separator = " or ";
    }
    if (instruction.count == 0) {
        text.add("is not allowed");
    }
}

void isConst(Ins instruction, json_object*, Text& text) {
    text.add("must be ").addValue(instruction.value);
}

void isEnum(Ins instruction, json_object*, Text& text) {
    size_t const length = lengthOf(instruction.value);
    text.add(length == 0 ? "is not allowed" : length == 1 ? "must be " : "must be one of ");
    for (size_t i = 0; i < length; ++i) {
        text.add(i == 0 ? "" : ", ").addValue(elementOf(instruction.value, i));
    }
}

void minimum(Ins instruction, json_object*, Text& text) {
    text.add(keywords::isFlagged(instruction) ? "must be greater than " : "must be at least ");
    text.add(*instruction.number);
}

void maximum(Ins instruction, json_object*, Text& text) {
    text.add(keywords::isFlagged(instruction) ? "must be less than " : "must be at most ");
    text.add(*instruction.number);
}

void exclusiveMinimum(Ins instruction, json_object*, Text& text) {
    text.add("must be greater than ").add(*instruction.number);
}

void exclusiveMaximum(Ins instruction, json_object*, Text& text) {
    text.add("must be less than ").add(*instruction.number);
}

void multipleOf(Ins instruction, json_object*, Text& text) {
    text.add("must be a multiple of ").add(*instruction.number);
}

void minLength(Ins instruction, json_object*, Text& text) {
    atLeast(instruction, text, "character");
}

void maxLength(Ins instruction, json_object*, Text& text) {
    atMost(instruction, text, "character");
}

void pattern(Ins instruction, json_object*, Text& text) {
    text.add("must match the pattern ").add(instruction.pattern->text());
}

void format(Ins instruction, json_object*, Text& text) {
    text.add("must be ").add(instruction.format->description);
}

void minItems(Ins instruction, json_object*, Text& text) { atLeast(instruction, text, "element"); }
void maxItems(Ins instruction, json_object*, Text& text) { atMost(instruction, text, "element"); }

void uniqueItems(Ins, json_object* refused, Text& text) {
    Budget budget;
    size_t const repeated = firstRepeated(refused, budget);
    text.add("must not have two equal elements, but [")
        .add(repeated)
        .add("] equals an earlier one");
}

void contains(Ins, json_object*, Text& text) { text.add("has none of the elements it must have"); }

void minProperties(Ins instruction, json_object*, Text& text) {
    atLeast(instruction, text, "member");
}

void maxProperties(Ins instruction, json_object*, Text& text) {
    atMost(instruction, text, "member");
}

void required(Ins instruction, json_object* refused, Text& text) {
    Budget budget;
    size_t const missing = keywords::firstMissing(instruction, refused, budget);
    text.add("must have the member ");
    text.addQuoted(missing < instruction.count ? instruction.names[missing] : "");
}

void oneOf(Ins, json_object*, Text& text) { text.add("fits more than one alternative"); }

void notAllowed(Ins, json_object*, Text& text) { text.add("is not allowed"); }

}  // namespace messages

}  // namespace jsonschema
