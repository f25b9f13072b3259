// Resolves the references between schemas: URIs and JSON pointers.
#pragma once

#include <json-c/json.h>

#include <string_view>

#include "jsonschema/Arena.h"

namespace jsonschema {

// The absolute form of `reference`, resolved against `base`:
//
//     base "http://host/a/b"    "#x" -> "http://host/a/b#x"    "/x"     -> "http://host/x"
//                               "x"  -> "http://host/a/x"      "urn:x"  -> "urn:x"
//
// "." and ".." are ordinary names: all documents are parts of one schema. A null pointer when out of
// memory.
std::string_view resolveUri(std::string_view base, std::string_view reference, Arena& arena);

// A URI split at its "#". The fragment is empty in a URI without one.
struct UriParts {
    explicit UriParts(std::string_view uri);
    std::string_view document;
    std::string_view fragment;
};

// Without its percent escapes, and NUL-terminated; a null pointer when out of memory.
std::string_view percentDecoded(std::string_view fragment, Arena& arena);

// The value in `document` that a JSON pointer names; null when there is none. The pointer is
// written as the fragment of a URI, "/definitions/a~1b%25": empty, or beginning with a slash.
json_object* followPointer(json_object* document, std::string_view fragment, Arena& arena);

}  // namespace jsonschema
