// Lookup by path, for the library's own callers: as JsonData::getJObj, without the copy of the key
// that its out-parameter needs.
#pragma once

#include <json-c/json.h>

#include "jsondata/JsonPath.h"

namespace vobiutils {

struct Lookup {
    enum Outcome {
        REFUSED,  // no document or no path
        ROOT,     // the path is empty: `value` is the root
        STRAYED,  // a token before the last leads nowhere
        ENDED,    // the last token was reached: `value` is what it names, or null
    };

    Outcome outcome = REFUSED;
    json_object* value = nullptr;   // borrowed, like parent
    json_object* parent = nullptr;  // the container of the last token that was found, or the root
    PathToken last;                 // where the walk ended; a slice of the caller's path
};

// Creates nothing. A failure is logged.
Lookup lookUp(json_object* root, char const* path);

}  // namespace vobiutils
