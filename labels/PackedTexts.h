// Texts packed at compile time: their characters without a gap, and the size of each. Pointers into
// them are made at start-up: a byte for each in place of a relocation, and no slower.
#ifndef VOBIUTILS_LABELS_PACKEDTEXTS_H
#define VOBIUTILS_LABELS_PACKEDTEXTS_H

#include <limits.h>
#include <stddef.h>

#include <string_view>

namespace vobiutils {

// The texts of one or more arrays, in their order.
template <size_t COUNT, size_t CHARS>
struct PackedTexts {
    char chars[CHARS] = {};           // each text with its terminator
    unsigned char sizes[COUNT] = {};  // terminator included
};

template <size_t COUNT>
consteval size_t charsIn(char const* const (&texts)[COUNT]) {
    size_t chars = 0;
    for (std::string_view const text : texts) {
        chars += text.size() + 1;
    }
    return chars;
}

int aTextIsTooLong();

template <auto const&... ARRAYS>
consteval auto pack() {
    PackedTexts<(sizeof ARRAYS + ...) / sizeof(char const*), (charsIn(ARRAYS) + ...)> packed;
    char* chars = packed.chars;
    unsigned char* size = packed.sizes;
    auto const append = [&](std::string_view text) {
        if (text.size() >= UCHAR_MAX) {
            *size = static_cast<unsigned char>(aTextIsTooLong());  // no constant: stops the build
        }
        chars += text.copy(chars, text.size()) + 1;
        *size++ = static_cast<unsigned char>(text.size() + 1);
    };
    auto const appendAll = [&](auto const& texts) {
        for (std::string_view const text : texts) {
            append(text);
        }
    };
    (appendAll(ARRAYS), ...);
    return packed;
}

}  // namespace vobiutils

#endif
