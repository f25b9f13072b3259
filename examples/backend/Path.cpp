#include "Path.h"

#include <algorithm>
#include <cstdlib>

#include "Limits.h"

namespace {

size_t const MAX_DIGITS = 6;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; }

bool isGoodToken(std::string const& token) {
    if (token.empty() || !Path::isIndex(token)) {
        return !token.empty() && std::none_of(token.begin(), token.end(), isControl);
    }
    return token.size() > 2 && token.size() <= MAX_DIGITS + 2 && token.back() == ']' &&
           std::all_of(token.begin() + 1, token.end() - 1, isDigit) &&
           (token[1] != '0' || token.size() == 3);
}

}  // namespace

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
