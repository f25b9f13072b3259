// The form of a character.
#include "jsondata/Utf8.h"

namespace vobiutils {

size_t characterLength(char const* text, char const* end) {
    unsigned int const first = static_cast<unsigned char>(*text);
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xc0 || first > 0xf7) {
        return 0;
    }
    size_t const length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    if (static_cast<size_t>(end - text) < length) {
        return 0;
    }
    unsigned int code = first & (0x7fU >> length);
    for (size_t i = 1; i < length; ++i) {
        unsigned int const byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xc0U) != 0x80) {
            return 0;
        }
        code = code << 6U | (byte & 0x3fU);
    }
    unsigned int const lowest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    bool const isSurrogate = code >= 0xd800 && code <= 0xdfff;
    return code >= lowest && code <= 0x10ffff && !isSurrogate ? length : 0;
}

}  // namespace vobiutils
