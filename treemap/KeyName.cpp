#include "treemap/KeyName.h"

#include <string.h>

namespace vobiutils {

namespace {

// There is room for any number. Most have one digit or two, and the table of pairs behind
// std::to_chars would be larger than all else here.
template <size_t SIZE>
void writeName(char (&text)[SIZE], unsigned int index) {
    static_assert(SIZE >= sizeof "[4294967295]");
    char* end = text;
    *end++ = '[';
    unsigned int rest = index;
    for (unsigned int longer = rest; longer >= 10U; longer /= 10U) {
        ++end;
    }
    end[1] = ']';
    end[2] = '\0';
    do {
        *end-- = static_cast<char>('0' + rest % 10U);
        rest /= 10U;
    } while (rest != 0);
}

}  // namespace

void setKeyName(TreeMapObject& handle, std::string_view name) {
    size_t const length = name.copy(handle.key_obj, sizeof handle.key_obj);
    memset(handle.key_obj + length, 0, sizeof handle.key_obj - length);
}

ElementName::ElementName(unsigned int index) { writeName(text, index); }

void setElementName(TreeMapObject& handle, unsigned int index) { writeName(handle.key_obj, index); }

KeyName::KeyName(TreeMapObject const& handle) {
    memcpy(text, handle.key_obj, sizeof handle.key_obj);
    text[sizeof handle.key_obj] = '\0';
}

}  // namespace vobiutils
