// Hands out memory that is freed as a whole.
#include "jsonschema/Arena.h"

#include <assert.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

namespace jsonschema {

Arena::~Arena() {
    while (last_ != nullptr) {
        Block* const previous = last_->previous;
        free(last_);
        last_ = previous;
    }
}

void* Arena::allocate(size_t size) {
    size = (size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
    if (size > left_) {
        size_t const space = std::max(size, BLOCK);
        Block* const block = static_cast<Block*>(malloc(sizeof(Block) + space));
        if (block == nullptr) {
            return nullptr;
        }
        block->previous = last_;
        last_ = block;
        next_ = reinterpret_cast<char*>(block + 1);
        left_ = space;
    }
    char* const piece = next_;
    assert(size <= left_ && reinterpret_cast<uintptr_t>(piece) % ALIGNMENT == 0);
    next_ += size;
    left_ -= size;
    return piece;
}

char const* Arena::copy(std::string_view string) {
    char* const text = static_cast<char*>(allocate(string.size() + 1));
    if (text != nullptr) {
        memcpy(text, string.data(), string.size());
        text[string.size()] = '\0';
    }
    return text;
}

}  // namespace jsonschema
