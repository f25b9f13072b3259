// Compiles the values of keywords that are not schemas.
#include <new>

#include "jsonschema/Compiler.h"
#include "jsonschema/Json.h"
#include "jsonschema/KeywordFunctions.h"
#include "jsonschema/Number.h"
#include "jsonschema/Pattern.h"

namespace jsonschema {

namespace {

bool isFiniteNumber(json_object* value) {
    return isNumber(json_object_get_type(value)) && Number(value).isFinite();
}

// The bits of a type; 0 for a name that is not one.
unsigned int bitsOf(std::string_view name, int draft) {
    static constexpr struct {
        char const* name;
        unsigned int bits;
    } TYPES[] = {
        {"null", 1U << json_type_null},
        {"boolean", 1U << json_type_boolean},
        {"string", 1U << json_type_string},
        {"array", 1U << json_type_array},
        {"object", 1U << json_type_object},
        {"number", 1U << json_type_int | 1U << json_type_double},
    };
    for (auto const& type : TYPES) {
        if (name == type.name) {
            return type.bits;
        }
    }
    return name != "integer" ? 0 : 1U << json_type_int | (draft >= 6 ? keywords::WHOLE_DOUBLE : 0);
}

}  // namespace

bool Compiler::readTypes(Instruction& instruction, json_object* operand) {
    bool const isList = is(operand, json_type_array);
    size_t const length = isList ? lengthOf(operand) : 1;
    for (size_t i = 0; i < length; ++i) {
        unsigned int const bits = bitsOf(textOf(isList ? elementOf(operand, i) : operand), draft_);
        if (bits == 0 || !budget_.spend(1)) {
            return false;
        }
        instruction.count |= bits;
    }
    return true;
}

bool Compiler::readNames(Instruction& instruction, json_object* array) {
    if (!is(array, json_type_array)) {
        return false;
    }
    size_t const length = lengthOf(array);
    std::string_view* const names = made(schema_.arena.make<std::string_view>(length));
    for (size_t i = 0; i < length && names != nullptr; ++i) {
        json_object* const name = elementOf(array, i);
        if (!budget_.spend(1) || !is(name, json_type_string)) {
            return false;
        }
        names[i] = kept(textOf(name));
    }
    instruction.names = names;
    instruction.count = length;
    return names != nullptr && !budget_.isUndecided();
}

bool Compiler::readNumber(Instruction& instruction, json_object* operand) {
    Form const form = instruction.keyword->form;
    if (form == Form::NUMBER_OR_BOOLEAN && is(operand, json_type_boolean)) {
        instruction.number = nullptr;
        instruction.count = json_object_get_boolean(operand) != 0 ? 1 : 0;
        return true;
    }
    if (!isFiniteNumber(operand) ||
        (form == Form::POSITIVE_NUMBER && !Number(operand).isPositive())) {
        return false;
    }
    void* const space = made(schema_.arena.allocate(sizeof(Number)));
    instruction.number = space != nullptr ? new (space) Number(operand) : nullptr;
    return space != nullptr;
}

bool Compiler::readCount(Instruction& instruction, json_object* operand) {
    if (!isFiniteNumber(operand) || !Number(operand).isCount()) {
        return false;
    }
    instruction.count = Number(operand).toSize();
    return true;
}

bool Compiler::readValue(Instruction& instruction, json_object* operand) {
    instruction.value = operand;
    if (!copies_ || operand == nullptr || instruction.keyword->holds == nullptr) {
        return true;
    }
    if (schema_.values == nullptr) {
        schema_.values = json_object_new_array();
    }
    instruction.value = copyOf(operand);
    if (schema_.values == nullptr || instruction.value == nullptr ||
        json_object_array_add(schema_.values, instruction.value) != 0) {
        json_object_put(instruction.value);
        budget_.giveUp();
    }
    return !budget_.isUndecided();
}

// Null for null, and with a budget that is used up.
json_object* Compiler::copyOf(json_object* value) {
    Budget::Level const level(budget_);
    json_type const type = json_object_get_type(value);
    json_object* copy = nullptr;
    switch (type) {
        case json_type_null: return nullptr;
        case json_type_boolean:
            copy = json_object_new_boolean(json_object_get_boolean(value));
            break;
        case json_type_double: copy = json_object_new_double(json_object_get_double(value)); break;
        case json_type_int:
            copy = json_object_get_int64(value) < INT64_MAX
                       ? json_object_new_int64(json_object_get_int64(value))
                       : json_object_new_uint64(json_object_get_uint64(value));
            break;
        case json_type_string:
            copy = json_object_new_string_len(json_object_get_string(value),
                                              json_object_get_string_len(value));
            break;
        case json_type_array: copy = json_object_new_array(); break;
        case json_type_object: copy = json_object_new_object(); break;
    }
    if (made(copy) == nullptr || budget_.isUndecided()) {
        json_object_put(copy);
        return nullptr;
    }
    copyContent(value, *copy);
    return copy;
}

void Compiler::copyContent(json_object* container, json_object& copy) {
    if (is(container, json_type_array)) {
        for (size_t i = 0; i < lengthOf(container) && !budget_.isUndecided(); ++i) {
            if (json_object_array_add(&copy, copyOf(elementOf(container, i))) != 0) {
                budget_.giveUp();
            }
        }
    }
    if (is(container, json_type_object)) {
        for (lh_entry* at = firstMember(container); at != nullptr && !budget_.isUndecided();
             at = lh_entry_next(at)) {
            if (json_object_object_add(&copy, nameOf(at), copyOf(valueOf(at))) != 0) {
                budget_.giveUp();
            }
        }
    }
}

// Null for one that is malformed, or exceeds the limits.
Pattern const* Compiler::readPattern(std::string_view text) {
    std::string_view const own = kept(text);
    void* const space = made(schema_.arena.allocate(sizeof(Pattern)));
    if (space == nullptr || budget_.isUndecided()) {
        return nullptr;
    }
    schema_.lastPattern = new (space) Pattern(own, budget_, schema_.lastPattern);
    return schema_.lastPattern->isValid() ? schema_.lastPattern : nullptr;
}

std::string_view Compiler::kept(std::string_view string) {
    return copies_ ? std::string_view(made(schema_.arena.copy(string)), string.size()) : string;
}

}  // namespace jsonschema
