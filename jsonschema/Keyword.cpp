// The keywords: one function each, over values whose form is known to be right, and their table.
#include "jsonschema/Keyword.h"

#include <string.h>

#include "jsonschema/Equality.h"
#include "jsonschema/Evaluation.h"
#include "jsonschema/Formats.h"
#include "jsonschema/Number.h"

namespace jsonschema {

namespace {

typedef Application const& App;

bool is(json_object* value, json_type type) { return json_object_is_type(value, type) != 0; }

bool isNumber(json_object* value) {
    return is(value, json_type_int) || is(value, json_type_double);
}

// Another keyword of the same schema; null when it is not there.
json_object* sibling(App app, char const* name) { return memberOf(app.schema, name); }

size_t elements(json_object* array) { return json_object_array_length(array); }

json_object* element(json_object* array, size_t index) {
    return json_object_array_get_idx(array, index);
}

char const* nameOf(lh_entry* entry) { return static_cast<char const*>(lh_entry_k(entry)); }

json_object* valueOf(lh_entry* entry) { return static_cast<json_object*>(lh_entry_v(entry)); }

// False when there is no point in going on.
bool isOpen(App app) { return !app.evaluation.budget().isUndecided(); }

// Any value.

bool isOfType(App app, std::string_view name) {
    switch (json_object_get_type(app.instance)) {
        case json_type_null: return name == "null";
        case json_type_boolean: return name == "boolean";
        case json_type_string: return name == "string";
        case json_type_array: return name == "array";
        case json_type_object: return name == "object";
        case json_type_int: return name == "integer" || name == "number";
        case json_type_double:
            return name == "number" || (name == "integer" && app.evaluation.draft() >= 6 &&
                                        Number(app.instance).isWhole());
    }
    return false;
}

bool type(App app) {
    if (!is(app.operand, json_type_array)) {
        return isOfType(app, textOf(app.operand));
    }
    for (size_t i = 0; i < elements(app.operand) && isOpen(app); ++i) {
        if (app.evaluation.budget().spend(1) && isOfType(app, textOf(element(app.operand, i)))) {
            return true;
        }
    }
    return false;
}

bool isConst(App app) { return areEqual(app.instance, app.operand, app.evaluation.budget()); }

bool isEnum(App app) {
    for (size_t i = 0; i < elements(app.operand) && isOpen(app); ++i) {
        if (areEqual(app.instance, element(app.operand, i), app.evaluation.budget())) {
            return true;
        }
    }
    return false;
}

// How many schemas of an array hold, up to as many as are enough to know.
int holdingSchemas(App app, int enough) {
    int count = 0;
    for (size_t i = 0; i < elements(app.operand) && count < enough && isOpen(app); ++i) {
        count += app.evaluation.satisfies(app.instance, element(app.operand, i)) ? 1 : 0;
    }
    return count;
}

bool anyOf(App app) { return holdingSchemas(app, 1) == 1; }
bool oneOf(App app) { return holdingSchemas(app, 2) == 1; }

bool allOf(App app) {
    for (size_t i = 0; i < elements(app.operand); ++i) {
        if (!app.evaluation.satisfies(app.instance, element(app.operand, i))) {
            return false;
        }
    }
    return true;
}

// Undecided is not "does not hold": the whole call is then invalid, whatever comes out here.
bool isNot(App app) { return !app.evaluation.satisfies(app.instance, app.operand); }

bool ifThenElse(App app) {
    bool const condition = app.evaluation.satisfies(app.instance, app.operand);
    json_object* const branch = sibling(app, condition ? "then" : "else");
    return branch == nullptr || app.evaluation.satisfies(app.instance, branch);
}

// Numbers.

Number::Order compared(App app) { return Number(app.instance).compare(Number(app.operand)); }

bool isFlagSet(App app, char const* name) {
    json_object* const flag = sibling(app, name);
    return is(flag, json_type_boolean) && json_object_get_boolean(flag) != 0;
}

bool minimum(App app) {
    if (!isNumber(app.instance)) {
        return true;
    }
    Number::Order const order = compared(app);
    return order == Number::GREATER ||
           (order == Number::EQUAL && !isFlagSet(app, "exclusiveMinimum"));
}

bool maximum(App app) {
    if (!isNumber(app.instance)) {
        return true;
    }
    Number::Order const order = compared(app);
    return order == Number::LESS || (order == Number::EQUAL && !isFlagSet(app, "exclusiveMaximum"));
}

// A Boolean beside the limit is a flag, whatever the draft; see minimum and maximum.
bool exclusiveMinimum(App app) {
    return !isNumber(app.operand) || !isNumber(app.instance) || compared(app) == Number::GREATER;
}

bool exclusiveMaximum(App app) {
    return !isNumber(app.operand) || !isNumber(app.instance) || compared(app) == Number::LESS;
}

bool multipleOf(App app) {
    return !isNumber(app.instance) ||
           Number(app.instance).isMultipleOf(Number(app.operand), app.evaluation.budget());
}

// Texts.

size_t codePoints(App app, std::string_view text) {
    app.evaluation.budget().spend(text.size() / 16);
    size_t count = 0;
    for (char c : text) {
        count += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1 : 0;
    }
    return count;
}

size_t limit(App app) { return Number(app.operand).toSize(); }

// A code point has 1 to 4 bytes: most texts need no counting.

bool minLength(App app) {
    std::string_view const text = textOf(app.instance);
    return !is(app.instance, json_type_string) || text.size() / 4 >= limit(app) ||
           codePoints(app, text) >= limit(app);
}

bool maxLength(App app) {
    std::string_view const text = textOf(app.instance);
    return text.size() <= limit(app) || codePoints(app, text) <= limit(app);
}

bool pattern(App app) {
    return !is(app.instance, json_type_string) ||
           app.evaluation.schema()
               .pattern(app.operand)
               .matches(textOf(app.instance), app.evaluation.budget());
}

bool format(App app) {
    return !is(app.instance, json_type_string) ||
           hasFormat(textOf(app.instance), textOf(app.operand), app.evaluation.budget());
}

// Arrays.

bool minItems(App app) {
    return !is(app.instance, json_type_array) || elements(app.instance) >= limit(app);
}

bool maxItems(App app) {
    return !is(app.instance, json_type_array) || elements(app.instance) <= limit(app);
}

bool uniqueItems(App app) {
    return !json_object_get_boolean(app.operand) || !is(app.instance, json_type_array) ||
           areUnique(app.instance, app.evaluation.budget());
}

bool itemsFrom(App app, size_t first, json_object* schema) {
    for (size_t i = first; i < elements(app.instance); ++i) {
        if (!app.evaluation.satisfies(element(app.instance, i), schema)) {
            return false;
        }
    }
    return true;
}

bool items(App app) {
    if (!is(app.instance, json_type_array)) {
        return true;
    }
    if (!is(app.operand, json_type_array)) {
        return itemsFrom(app, 0, app.operand);
    }
    for (size_t i = 0; i < elements(app.operand) && i < elements(app.instance); ++i) {
        if (!app.evaluation.satisfies(element(app.instance, i), element(app.operand, i))) {
            return false;
        }
    }
    return true;
}

bool additionalItems(App app) {
    json_object* const listed = sibling(app, "items");
    return !is(app.instance, json_type_array) || !is(listed, json_type_array) ||
           itemsFrom(app, elements(listed), app.operand);
}

bool contains(App app) {
    if (!is(app.instance, json_type_array)) {
        return true;
    }
    for (size_t i = 0; i < elements(app.instance) && isOpen(app); ++i) {
        if (app.evaluation.satisfies(element(app.instance, i), app.operand)) {
            return true;
        }
    }
    return false;
}

// Objects.

size_t members(json_object* object) {
    return static_cast<size_t>(json_object_object_length(object));
}

bool minProperties(App app) {
    return !is(app.instance, json_type_object) || members(app.instance) >= limit(app);
}

bool maxProperties(App app) {
    return !is(app.instance, json_type_object) || members(app.instance) <= limit(app);
}

bool hasAll(App app, json_object* names) {
    for (size_t i = 0; i < elements(names); ++i) {
        std::string_view const name = textOf(element(names, i));
        // a name that holds a NUL is no member's
        if (!app.evaluation.budget().spend(1 + name.size() / 16) ||
            strlen(name.data()) != name.size() || !findMember(app.instance, name.data())) {
            return false;
        }
    }
    return true;
}

bool required(App app) { return !is(app.instance, json_type_object) || hasAll(app, app.operand); }

// Calls `holds` with every member of the instance, until one fails.
template <typename Holds>
bool everyMember(App app, Holds const& holds) {
    if (!is(app.instance, json_type_object)) {
        return true;
    }
    lh_entry* member = nullptr;
    lh_foreach(json_object_get_object(app.instance), member) {
        size_t const effort = 1 + strlen(nameOf(member)) / 16;
        if (!app.evaluation.budget().spend(effort) || !holds(member)) {
            return false;
        }
    }
    return true;
}

bool properties(App app) {
    return everyMember(app, [&](lh_entry* member) {
        json_object* const schema = memberOf(app.operand, nameOf(member));
        return schema == nullptr || app.evaluation.satisfies(valueOf(member), schema);
    });
}

bool matchesPattern(App app, lh_entry* pattern, char const* name) {
    return app.evaluation.schema().pattern(nameOf(pattern)).matches(name, app.evaluation.budget());
}

bool patternProperties(App app) {
    return everyMember(app, [&](lh_entry* member) {
        lh_entry* pattern = nullptr;
        lh_foreach(json_object_get_object(app.operand), pattern) {
            if (matchesPattern(app, pattern, nameOf(member)) &&
                !app.evaluation.satisfies(valueOf(member), valueOf(pattern))) {
                return false;
            }
        }
        return true;
    });
}

bool isNamedBeside(App app, char const* name) {
    json_object* const named = sibling(app, "properties");
    if (memberOf(named, name) != nullptr) {
        return true;
    }
    json_object* const patterns = sibling(app, "patternProperties");
    if (patterns == nullptr) {
        return false;
    }
    lh_entry* pattern = nullptr;
    lh_foreach(json_object_get_object(patterns), pattern) {
        if (matchesPattern(app, pattern, name)) {
            return true;
        }
    }
    return false;
}

bool additionalProperties(App app) {
    return everyMember(app, [&](lh_entry* member) {
        return isNamedBeside(app, nameOf(member)) ||
               app.evaluation.satisfies(valueOf(member), app.operand);
    });
}

bool propertyNames(App app) {
    return everyMember(app, [&](lh_entry* member) {
        json_object* const name = json_object_new_string(nameOf(member));
        bool const holds = name != nullptr && app.evaluation.satisfies(name, app.operand);
        if (name == nullptr) {
            app.evaluation.budget().giveUp();
        }
        json_object_put(name);
        return holds;
    });
}

bool dependencies(App app) {
    return everyMember(app, [&](lh_entry* member) {
        json_object* const needed = memberOf(app.operand, nameOf(member));
        if (needed == nullptr) {
            return true;
        }
        return is(needed, json_type_array) ? hasAll(app, needed)
                                           : app.evaluation.satisfies(app.instance, needed);
    });
}

constexpr Keyword KEYWORDS[] = {
    {"$id", 6, Form::TEXT, nullptr},
    {"$ref", 4, Form::REFERENCE, nullptr},
    {"additionalItems", 4, Form::SCHEMA_OR_BOOLEAN, additionalItems},
    {"additionalProperties", 4, Form::SCHEMA_OR_BOOLEAN, additionalProperties},
    {"allOf", 4, Form::SCHEMAS, allOf},
    {"anyOf", 4, Form::SCHEMAS, anyOf},
    {"const", 6, Form::ANY, isConst},
    {"contains", 6, Form::SCHEMA, contains},
    {"definitions", 4, Form::SCHEMA_MAP, nullptr},
    {"dependencies", 4, Form::DEPENDENCIES, dependencies},
    {"else", 7, Form::SCHEMA, nullptr},
    {"enum", 4, Form::VALUES, isEnum},
    {"exclusiveMaximum", 4, Form::NUMBER_OR_BOOLEAN, exclusiveMaximum},
    {"exclusiveMinimum", 4, Form::NUMBER_OR_BOOLEAN, exclusiveMinimum},
    {"format", 4, Form::TEXT, format},
    {"id", 4, Form::ANY, nullptr},
    {"if", 7, Form::SCHEMA, ifThenElse},
    {"items", 4, Form::ITEMS, items},
    {"maxItems", 4, Form::COUNT, maxItems},
    {"maxLength", 4, Form::COUNT, maxLength},
    {"maxProperties", 4, Form::COUNT, maxProperties},
    {"maximum", 4, Form::NUMBER, maximum},
    {"minItems", 4, Form::COUNT, minItems},
    {"minLength", 4, Form::COUNT, minLength},
    {"minProperties", 4, Form::COUNT, minProperties},
    {"minimum", 4, Form::NUMBER, minimum},
    {"multipleOf", 4, Form::POSITIVE_NUMBER, multipleOf},
    {"not", 4, Form::SCHEMA, isNot},
    {"oneOf", 4, Form::SCHEMAS, oneOf},
    {"pattern", 4, Form::PATTERN, pattern},
    {"patternProperties", 4, Form::PATTERN_MAP, patternProperties},
    {"properties", 4, Form::SCHEMA_MAP, properties},
    {"propertyNames", 6, Form::SCHEMA, propertyNames},
    {"required", 4, Form::TEXTS, required},
    {"then", 7, Form::SCHEMA, nullptr},
    {"type", 4, Form::TYPES, type},
    {"uniqueItems", 4, Form::BOOLEAN, uniqueItems},
};

constexpr unsigned int SLOTS = 128;

// By the first characters, with weights under which few keywords meet: in four places two share a slot.
constexpr unsigned int slotOf(char const* name) {
    unsigned int const weights[] = {10, 44, 57, 53};
    unsigned int slot = 0;
    for (int i = 0; i < 4 && name[i] != '\0'; ++i) {
        slot += weights[i] * static_cast<unsigned char>(name[i]);
    }
    return slot % SLOTS;
}

// Where to find each keyword: its number in the table and 1, at its slot or the next free one.
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
