// The limit: what a program would write by hand for one path, its keys split already.
#pragma once

#include <json-c/json.h>

inline bool step(json_object*& at, char const* key) {
    return json_object_object_get_ex(at, key, &at) != 0;
}
inline bool step(json_object*& at, int index) {
    at = json_object_array_get_idx(at, static_cast<size_t>(index));
    return at != nullptr;
}

// Null when a step leads nowhere.
template <typename... Steps>
json_object* byHand(json_object* root, Steps... steps) {
    return (step(root, steps) && ...) ? root : nullptr;
}
