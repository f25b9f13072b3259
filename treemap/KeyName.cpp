#include "KeyName.h"

#include <string.h>

#include <charconv>

namespace {

// There is room for any number.
template <size_t SIZE>
void writeName(char (&text)[SIZE], int index) {
    static_assert(SIZE >= sizeof "[-2147483648]");
    text[0] = '[';
    char* const end = std::to_chars(text + 1, text + SIZE, index).ptr;
    end[0] = ']';
    end[1] = '\0';
}

}  // namespace

void setKeyName(TreeMapObject& handle, std::string_view name) {
    size_t const length = name.copy(handle.key_obj, sizeof handle.key_obj);
    memset(handle.key_obj + length, 0, sizeof handle.key_obj - length);
}

ElementName::ElementName(int index) { writeName(text, index); }

void setElementName(TreeMapObject& handle, size_t index) {
    writeName(handle.key_obj, static_cast<int>(index));
}

KeyName::KeyName(TreeMapObject const& handle) {
    memcpy(text, handle.key_obj, sizeof handle.key_obj);
    text[sizeof handle.key_obj] = '\0';
}
