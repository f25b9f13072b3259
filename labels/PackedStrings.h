// Concatenates arrays of strings at compile time. A pointer table is filled from that when the
// library is loaded.
//
//     {"LIST_REQ", "LIST_RESP"}  ->  "LIST_REQ\0LIST_RESP\0"
//
// In an initialized pointer table each string would cost a pointer and a relocation in the file:
// for the label tables 7,472 bytes on MIPS.
#pragma once

#include <stddef.h>

#include <array>
#include <string_view>

namespace vobiutils {

template <size_t COUNT>
consteval size_t charsIn(char const* const (&strings)[COUNT]) {
    size_t chars = 0;
    for (std::string_view const string : strings) {
        chars += string.size() + 1;
    }
    return chars;
}

// The characters of the strings of one or more arrays, in their order, each with its terminator.
template <auto const&... ARRAYS>
consteval auto pack() {
    std::array<char, (charsIn(ARRAYS) + ...)> packed = {};
    char* end = packed.data();
    auto const append = [&](auto const& strings) {
        for (std::string_view const string : strings) {
            end += string.copy(end, string.size()) + 1;
        }
    };
    (append(ARRAYS), ...);
    return packed;
}

}  // namespace vobiutils
