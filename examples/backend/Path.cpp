#include "Path.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "Limits.h"

namespace {

size_t const MAX_DIGITS = 6;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Characters of UTF-8 by their first byte, with the lowest code that they may have.
struct Form {
    unsigned int mask, lead, lowest;
    size_t length;
};
Form const FORMS[] = {
    {0x80, 0x00, 0x20, 1}, {0xe0, 0xc0, 0x80, 2}, {0xf0, 0xe0, 0x800, 3}, {0xf8, 0xf0, 0x10000, 4}};

// The length of the character at the start; 0 when there is none that is plain text.
size_t characterLength(std::string_view text) {
    unsigned int const first = static_cast<unsigned char>(text[0]);
    for (Form const& form : FORMS) {
        if ((first & form.mask) != form.lead || text.size() < form.length) {
            continue;
        }
        unsigned int code = first & ~form.mask;
        for (char const c : text.substr(1, form.length - 1)) {
            unsigned int const byte = static_cast<unsigned char>(c);
            code = (byte & 0xc0U) == 0x80U ? code << 6U | (byte & 0x3fU) : 0x110000U;
        }
        bool const isCharacter = code >= form.lowest && code < 0x110000U && code != 0x7fU &&
                                 (code < 0x80U || code > 0x9fU) &&
                                 (code < 0xd800U || code > 0xdfffU);
        return isCharacter ? form.length : 0;
    }
    return 0;
}

bool isGoodToken(std::string const& token) {
    if (token.empty() || !Path::isIndex(token)) {
        return !token.empty() && token.size() <= MAX_NAME;
    }
    return token.size() > 2 && token.size() <= MAX_DIGITS + 2 && token.back() == ']' &&
           std::all_of(token.begin() + 1, token.end() - 1, isDigit) &&
           (token[1] != '0' || token.size() == 3);
}

}  // namespace

bool isPlainText(std::string const& text) {
    std::string_view rest = text;
    while (!rest.empty()) {
        size_t const length = characterLength(rest);
        if (length == 0) {
            return false;
        }
        rest.remove_prefix(length);
    }
    return true;
}

std::optional<Path> Path::parse(std::string const& text) {
    Path path;
    for (size_t begin = 0; begin <= text.size() && !text.empty();) {
        size_t const end = std::min(text.find('.', begin), text.size());
        path.tokens.push_back(text.substr(begin, end - begin));
        if (!isGoodToken(path.last()) || path.tokens.size() > MAX_PATH_TOKENS) {
            return std::nullopt;
        }
        begin = end + 1;
    }
    return path;
}

bool Path::hasIndex() const { return std::any_of(tokens.begin(), tokens.end(), isIndex); }

Path Path::parent() const {
    Path result;
    result.tokens.assign(tokens.begin(), tokens.end() - 1);
    return result;
}

std::string Path::text() const {
    std::string result;
    for (std::string const& token : tokens) {
        result += (result.empty() ? "" : ".") + token;
    }
    return result;
}

unsigned int Path::indexOf(std::string const& token) {
    return static_cast<unsigned int>(std::strtoul(token.c_str() + 1, nullptr, 10));
}
