// Reads typed values by path, with the defaults, conversions and log lines of the handle's get and
// get_ex.
#pragma once

#include <json-c/json.h>

#include "treemap/ValueTraits.h"

namespace vobiutils {

// The node at a path, borrowed; null if there is none, which is logged at the level DEBUG, as is a
// node of another type at the level WARNING.
// intended: a value of another type is converted by json-c's rules, not replaced by the default.
json_object* getNode(json_object* document, char const* path, LogWords const& words);

// The same, but null for a node of another type, too, and a missing one is an error in the log.
json_object* getNodeOfType(json_object* document, char const* path, LogWords const& words);

template <typename T>
T getValue(json_object* document, char const* path) {
    json_object* const node = getNode(document, path, ValueTraits<T>::WORDS);
    return node != nullptr ? ValueTraits<T>::read(node) : T();
}

template <typename T>
bool getChecked(json_object* document, char const* path, T& out) {
    if constexpr (isCString<T>) {
        out = nullptr;
    }
    json_object* const node = getNodeOfType(document, path, ValueTraits<T>::WORDS);
    if (node != nullptr) {
        out = ValueTraits<T>::read(node);
    }
    return node != nullptr;
}

}  // namespace vobiutils
