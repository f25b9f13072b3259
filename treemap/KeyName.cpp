#include "KeyName.h"

#include <string.h>

#include <charconv>

void setKeyName(TreeMapObject& handle, std::string_view name) {
    size_t const length = name.copy(handle.key_obj, sizeof handle.key_obj);
    memset(handle.key_obj + length, 0, sizeof handle.key_obj - length);
}

ElementName::ElementName(int index) {
    text[0] = '[';
    char* const end = std::to_chars(text + 1, text + sizeof text, index).ptr;  // always fits
    end[0] = ']';
    end[1] = '\0';
}

void setElementName(TreeMapObject& handle, size_t index) {
    ElementName const name(static_cast<int>(index));
    strcpy(handle.key_obj, name.text);
}

KeyName::KeyName(TreeMapObject const& handle) {
    memcpy(text, handle.key_obj, sizeof handle.key_obj);
    text[sizeof handle.key_obj] = '\0';
}
