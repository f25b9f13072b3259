// Connects the keywords of one schema that have to know each other.
#pragma once

#include "jsonschema/Budget.h"
#include "jsonschema/Schema.h"

namespace jsonschema {

// Both take all instructions of a schema; those without a keyword are skipped.

void linkSiblings(Instruction* first, Instruction const* end);

// Merges what can be decided with the one look at each member that "properties" takes anyhow. Comes
// after linkSiblings.
void mergeIntoProperties(Instruction* first, Instruction const* end, Budget& budget);

}  // namespace jsonschema
