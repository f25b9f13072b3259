#include "KeyName.h"

#include <stdio.h>
#include <string.h>

void setKeyName(TreeMapObject& handle, std::string_view name) {
    size_t const length = name.copy(handle.key_obj, sizeof handle.key_obj);
    memset(handle.key_obj + length, 0, sizeof handle.key_obj - length);
}

void setElementName(TreeMapObject& handle, size_t index) {
    snprintf(handle.key_obj, sizeof handle.key_obj, "[%d]", static_cast<int>(index));
}

std::string_view keyName(TreeMapObject const& handle) {
    return {handle.key_obj, strnlen(handle.key_obj, sizeof handle.key_obj)};
}
