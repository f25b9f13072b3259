// Links keywords that depend on others of the same schema.
#include "jsonschema/Siblings.h"

#include <string.h>

#include "jsonschema/NameMap.h"

namespace jsonschema {

namespace {

bool isCalled(Instruction const& instruction, char const* name) {
    Keyword const* const keyword = instruction.keyword;
    return keyword != nullptr && keyword->name[0] == name[0] && strcmp(keyword->name, name) == 0;
}

Instruction const* findSibling(char const* name, Instruction const* first, Instruction const* end) {
    while (first != end && !isCalled(*first, name)) {
        ++first;
    }
    return first != end ? first : nullptr;
}

}  // namespace

void linkSiblings(Instruction* first, Instruction const* end) {
    for (Instruction* at = first; at != end && at->keyword != nullptr; ++at) {
        for (int i = 0; i < 2 && at->keyword->siblings[i] != nullptr; ++i) {
            at->siblings[i] = findSibling(at->keyword->siblings[i], first, end);
        }
    }
}

void mergeIntoProperties(Instruction* first, Instruction const* end, Budget& budget) {
    Instruction const* const properties = findSibling("properties", first, end);
    for (Instruction* at = first; at != end && properties != nullptr; ++at) {
        if (at == properties->siblings[0]) {
            at->isMerged = at->siblings[1] == nullptr;  // no patterns
        }
        if (at == properties->siblings[1]) {
            at->isMerged = properties->map->requireAll(at->names, at->count, budget);
        }
    }
}

}  // namespace jsonschema
