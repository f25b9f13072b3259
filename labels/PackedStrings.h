// Concatenates arrays of strings at compile time: their characters without a gap, and one byte for
// the size of each. A pointer table is filled from that when the library is loaded.
//
//     {"LIST_REQ", "LIST_RESP"}  ->  chars  "LIST_REQ\0LIST_RESP\0"
//                                    sizes  9, 10
//
// In an initialized pointer table each string would cost a pointer and a relocation in the file:
// for the label tables 7,472 bytes on MIPS.
#ifndef VOBIUTILS_LABELS_PACKEDSTRINGS_H
#define VOBIUTILS_LABELS_PACKEDSTRINGS_H

#include <limits.h>
#include <stddef.h>

#include <algorithm>
#include <string_view>

namespace vobiutils {

template <size_t COUNT, size_t CHARS>
struct PackedStrings {
    char chars[CHARS] = {};           // each string with its terminator
    unsigned char sizes[COUNT] = {};  // terminator included
};

template <size_t COUNT>
consteval size_t charsIn(char const* const (&strings)[COUNT]) {
    size_t chars = 0;
    for (std::string_view const string : strings) {
        chars += string.size() + 1;
    }
    return chars;
}

template <size_t COUNT>
consteval size_t longestIn(char const* const (&strings)[COUNT]) {
    size_t longest = 0;
    for (std::string_view const string : strings) {
        longest = std::max(longest, string.size());
    }
    return longest;
}

// The strings of one or more arrays, in their order.
template <auto const&... ARRAYS>
consteval auto pack() {
    static_assert(((longestIn(ARRAYS) < UCHAR_MAX) && ...), "a label is too long");
    PackedStrings<(sizeof ARRAYS + ...) / sizeof(char const*), (charsIn(ARRAYS) + ...)> packed;
    char* chars = packed.chars;
    unsigned char* size = packed.sizes;
    auto const append = [&](auto const& strings) {
        for (std::string_view const string : strings) {
            chars += string.copy(chars, string.size()) + 1;
            *size++ = static_cast<unsigned char>(string.size() + 1);
        }
    };
    (append(ARRAYS), ...);
    return packed;
}

}  // namespace vobiutils

#endif
