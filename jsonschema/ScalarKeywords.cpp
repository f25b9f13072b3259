// The keywords that compare a value as a whole, a number or a string.
#include "jsonschema/Equality.h"
#include "jsonschema/Evaluation.h"
#include "jsonschema/Formats.h"
#include "jsonschema/Json.h"
#include "jsonschema/KeywordFunctions.h"
#include "jsonschema/Number.h"

namespace jsonschema {

namespace keywords {

bool type(App app) {
    size_t const types = app.instruction->count;
    return (types & bitOf(app.type)) != 0 ||
           (app.type == json_type_double && (types & WHOLE_DOUBLE) != 0 &&
            Number(app.instance).isWhole());
}

bool isConst(App app) {
    return areEqual(app.instance, app.instruction->value, app.evaluation.budget());
}

bool isEnum(App app) {
    json_object* const values = app.instruction->value;
    Budget& budget = app.evaluation.budget();
    for (size_t i = 0; i < lengthOf(values) && !budget.isUndecided(); ++i) {
        if (areEqual(app.instance, elementOf(values, i), budget)) {
            return true;
        }
    }
    return false;
}

// Numbers.

namespace {

Number::Order compared(App app) { return Number(app.instance).compare(*app.instruction->number); }

}  // namespace

bool isFlagged(Instruction const& limit) {
    Instruction const* const flag = limit.siblings[0];
    return flag != nullptr && flag->number == nullptr && flag->count != 0;
}

bool minimum(App app) {
    if (!isNumber(app.type)) {
        return true;
    }
    Number::Order const order = compared(app);
    return order == Number::GREATER || (order == Number::EQUAL && !isFlagged(*app.instruction));
}

bool maximum(App app) {
    if (!isNumber(app.type)) {
        return true;
    }
    Number::Order const order = compared(app);
    return order == Number::LESS || (order == Number::EQUAL && !isFlagged(*app.instruction));
}

bool exclusiveMinimum(App app) {
    return app.instruction->number == nullptr || !isNumber(app.type) ||
           compared(app) == Number::GREATER;
}

bool exclusiveMaximum(App app) {
    return app.instruction->number == nullptr || !isNumber(app.type) ||
           compared(app) == Number::LESS;
}

bool multipleOf(App app) {
    return !isNumber(app.type) ||
           Number(app.instance).isMultipleOf(*app.instruction->number, app.evaluation.budget());
}

// Strings.

namespace {

size_t codePoints(App app, std::string_view string) {
    app.evaluation.budget().spend(string.size() / 16);
    size_t count = 0;
    for (char c : string) {
        count += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1 : 0;
    }
    return count;
}

}  // namespace

// A code point has 1 to 4 bytes: most strings need no counting.

bool minLength(App app) {
    if (app.type != json_type_string) {
        return true;
    }
    std::string_view const string = charactersOf(app.instance);
    size_t const limit = app.instruction->count;
    return string.size() / 4 >= limit || codePoints(app, string) >= limit;
}

bool maxLength(App app) {
    if (app.type != json_type_string) {
        return true;
    }
    std::string_view const string = charactersOf(app.instance);
    size_t const limit = app.instruction->count;
    return string.size() <= limit || codePoints(app, string) <= limit;
}

bool pattern(App app) {
    return app.type != json_type_string ||
           app.instruction->pattern->matches(charactersOf(app.instance),
                                             app.evaluation.matchSpace(), app.evaluation.budget());
}

bool format(App app) {
    Format const* const format = app.instruction->format;
    return app.type != json_type_string || format == nullptr ||
           hasFormat(charactersOf(app.instance), *format, app.evaluation.budget());
}

}  // namespace keywords

}  // namespace jsonschema
