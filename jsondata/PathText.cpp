// Appending steps, in memory that is doubled as needed.
#include "jsondata/PathText.h"

#include <assert.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace vobiutils {

bool isNameable(char const* name) {
    return *name != '\0' && *name != '[' && strchr(name, '.') == nullptr;
}

PathText::~PathText() { free(text_); }

json_object* PathText::newString() const {
    assert(length_ <= capacity_);
    return json_object_new_string_len(length_ > 0 ? text_ : "", static_cast<int>(length_));
}

bool PathText::append(char const* piece) {
    size_t const length = length_ + strlen(piece);
    if (length > capacity_) {
        size_t const capacity = length * 2 + 64;
        void* const grown = realloc(text_, capacity);
        if (grown == nullptr) {
            return false;
        }
        text_ = static_cast<char*>(grown);
        capacity_ = capacity;
    }
    memcpy(text_ + length_, piece, length - length_);
    length_ = length;
    return true;
}

bool PathText::push(Step step) {
    char token[32];
    snprintf(token, sizeof token, "[%lu]", static_cast<unsigned long>(step.index));
    return (length_ == 0 || append(".")) && append(step.name != nullptr ? step.name : token);
}

}  // namespace vobiutils
