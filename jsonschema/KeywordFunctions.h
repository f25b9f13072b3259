// The functions in the table of keywords.
#pragma once

#include <stddef.h>

#include "jsonschema/Budget.h"
#include "jsonschema/Keyword.h"

namespace jsonschema {

namespace keywords {

typedef Application const& App;

// In a set of types, the bit of a json_type, and the one of doubles that are whole numbers.
inline unsigned int bitOf(json_type type) { return 1U << static_cast<unsigned int>(type); }
unsigned int const WHOLE_DOUBLE = 1U << 7;

// ScalarKeywords.cpp: any value, numbers, strings.
bool type(App app);
bool isConst(App app);
bool isEnum(App app);
bool minimum(App app);
bool maximum(App app);
bool exclusiveMinimum(App app);
bool exclusiveMaximum(App app);
bool multipleOf(App app);
bool minLength(App app);
bool maxLength(App app);
bool pattern(App app);
bool format(App app);

// ContainerKeywords.cpp: arrays and objects.
bool minItems(App app);
bool maxItems(App app);
bool uniqueItems(App app);
bool items(App app);
bool additionalItems(App app);
bool contains(App app);
bool minProperties(App app);
bool maxProperties(App app);
bool required(App app);
bool properties(App app);
bool patternProperties(App app);
bool additionalProperties(App app);
bool propertyNames(App app);
bool dependencies(App app);

// SchemaKeywords.cpp: further schemas for the same value.
bool never(App app);
bool reference(App app);
bool allOf(App app);
bool anyOf(App app);
bool oneOf(App app);
bool isNot(App app);
bool ifThenElse(App app);

// Whether a limit is exclusive: a Boolean "exclusiveMinimum" beside a "minimum" is a flag, whatever
// the draft.
bool isFlagged(Instruction const& limit);

// The index of the first of the names that the object does not have; their number when it has all.
size_t firstMissing(Instruction const& names, json_object* object, Budget& budget);

}  // namespace keywords

}  // namespace jsonschema
