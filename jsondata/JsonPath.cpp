// Index numbers and copies of tokens.
#include "jsondata/JsonPath.h"

#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <charconv>
#include <system_error>

namespace vobiutils {

namespace {

// White space of the "C" locale, whatever locale is set.
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Not by std::find_if_not, which looks at four characters in a round.
char const* skipSpace(char const* at, char const* end) {
    while (at != end && isSpace(*at)) {
        ++at;
    }
    return at;
}

// Reads a number as `stream >> number >> std::ws` would, from a stream that holds [begin, end).
unsigned int extract(char const* begin, char const* end) {
    char const* at = skipSpace(begin, end);
    bool const isBlank = at == end;
    bool const isNegative = !isBlank && *at == '-';
    if (isNegative || (!isBlank && *at == '+')) {
        ++at;
    }
    unsigned int number = 0;
    auto const [rest, error] = std::from_chars(at, end, number);
    // a stream that failed skips no more white space
    at = error == std::errc() ? skipSpace(rest, end) : rest;
    if (isBlank || at != end) {
        printf("EXCEPTION: BE_StrTo: something unexpected happened");
    }
    if (error == std::errc::result_out_of_range) {
        return UINT_MAX;
    }
    return isNegative ? 0U - number : number;
}

}  // namespace

int64_t indexOf(PathToken token) {
    size_t const brackets = 2;
    return token.text().size() > brackets ? int64_t{extract(token.start() + 1, token.end() - 1)}
                                          : -1;
}

char* duplicate(PathToken token) {
    std::string_view const text = token.text();
    char* const copy = static_cast<char*>(malloc(text.size() + 1));
    if (copy != nullptr) {
        memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
    }
    return copy;
}

}  // namespace vobiutils
