// Just enough of URIs and JSON pointers to find one part of a schema from another.
#include "jsonschema/Uri.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>

namespace jsonschema {

namespace {

// The position of the host, in "http://host/path"; 0 in a URI without one.
size_t afterHostMark(std::string_view uri) {
    size_t const mark = uri.find("://");
    return mark != uri.npos ? mark + 3 : 0;
}

int hexDigit(char c) {
    char const digits[] = "0123456789abcdef";
    char const* const at = c != '\0' ? strchr(digits, c | 0x20) : nullptr;
    return at != nullptr ? static_cast<int>(at - digits) : -1;
}

// Decodes first the percent escapes of the URI, then those of the pointer: "~1" is a slash, "~0" a
// tilde. NUL-terminated; a null pointer when out of memory.
std::string_view decodedToken(std::string_view token, Arena& arena) {
    std::string_view const escaped = percentDecoded(token, arena);
    char* const plain = arena.make<char>(escaped.size() + 1);
    size_t length = 0;
    for (size_t i = 0; i < escaped.size() && plain != nullptr; ++i) {
        char const next = i + 1 < escaped.size() ? escaped[i + 1] : '\0';
        bool const isEscape = escaped[i] == '~' && (next == '0' || next == '1');
        plain[length++] = !isEscape ? escaped[i] : next == '0' ? '~' : '/';
        i += isEscape ? 1 : 0;
    }
    return {plain, length};
}

json_object* elementAt(json_object* array, std::string_view token) {
    bool const isIndex = !token.empty() && token.size() < 10 &&
                         token.find_first_not_of("0123456789") == token.npos &&
                         (token == "0" || token[0] != '0');
    // json-c returns null for an index past the end
    return isIndex ? json_object_array_get_idx(array, strtoul(token.data(), nullptr, 10)) : nullptr;
}

json_object* childAt(json_object* container, std::string_view token) {
    json_object* child = nullptr;
    switch (json_object_get_type(container)) {
        case json_type_array: return elementAt(container, token);
        case json_type_object:
            if (token.find('\0') == token.npos) {  // json-c names end at NUL: none contains one
                json_object_object_get_ex(container, token.data(), &child);
            }
            return child;
        default: return nullptr;
    }
}

}  // namespace

std::string_view resolveUri(std::string_view base, std::string_view reference, Arena& arena) {
    std::string_view kept = UriParts(base).document;
    size_t const scheme = reference.find(':');
    if (scheme != reference.npos && scheme < reference.find_first_of("/?#")) {
        kept = {};
    } else if (!reference.empty() && reference[0] == '/') {
        kept = kept.substr(0, kept.find('/', afterHostMark(kept)));
    } else if (!reference.empty() && reference[0] != '#') {
        kept = kept.substr(0, std::max(kept.rfind('/') + 1, afterHostMark(kept)));
    }
    char* const uri = arena.make<char>(kept.size() + reference.size());
    if (uri == nullptr) {
        return {};
    }
    kept.copy(uri, kept.size());
    reference.copy(uri + kept.size(), reference.size());
    return {uri, kept.size() + reference.size()};
}

UriParts::UriParts(std::string_view uri) : document(uri.substr(0, uri.find('#'))) {
    if (document.size() < uri.size()) {
        fragment = uri.substr(document.size() + 1);
    }
}

std::string_view percentDecoded(std::string_view fragment, Arena& arena) {
    char* const plain = arena.make<char>(fragment.size() + 1);
    size_t length = 0;
    for (size_t i = 0; i < fragment.size() && plain != nullptr; ++i) {
        bool const isEscape = fragment[i] == '%' && i + 2 < fragment.size() &&
                              hexDigit(fragment[i + 1]) >= 0 && hexDigit(fragment[i + 2]) >= 0;
        plain[length++] =
            isEscape ? static_cast<char>(hexDigit(fragment[i + 1]) * 16 + hexDigit(fragment[i + 2]))
                     : fragment[i];
        i += isEscape ? 2 : 0;
    }
    return {plain, length};
}

json_object* followPointer(json_object* document, std::string_view fragment, Arena& arena) {
    json_object* value = document;
    while (!fragment.empty() && value != nullptr) {
        size_t const end = fragment.find('/', 1);
        std::string_view const token = fragment.substr(1, end == fragment.npos ? end : end - 1);
        std::string_view const name = decodedToken(token, arena);
        value = name.data() != nullptr ? childAt(value, name) : nullptr;
        fragment.remove_prefix(token.size() + 1);
    }
    return value;
}

}  // namespace jsonschema
