// References between schemas, as URI text.
#ifndef JSONSCHEMA_URI_H
#define JSONSCHEMA_URI_H

#include <json-c/json.h>

#include <string>
#include <string_view>

namespace jsonschema {

// The absolute form of `reference` where `base` is in force: a URI with a scheme stands for itself,
// "#..." keeps the document, "/..." the host, and anything else the folder. "." and ".." are names like
// others: the documents meant are the ones inside one schema.
std::string resolveUri(std::string_view base, std::string_view reference);

// A URI cut at its "#".
struct UriParts {
    explicit UriParts(std::string_view uri);
    std::string_view document;
    std::string_view fragment;
};

// The value a JSON pointer names, written as the fragment of a URI ("/definitions/a~1b%25", empty, or
// beginning with a slash); null when it leads nowhere.
json_object* followPointer(json_object* document, std::string_view fragment);

}  // namespace jsonschema

#endif
