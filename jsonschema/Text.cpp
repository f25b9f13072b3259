// Writes text into a buffer of fixed size, cut between characters.
#include "jsonschema/Text.h"

#include <assert.h>
#include <string.h>

#include <charconv>

#include "jsonschema/Json.h"
#include "jsonschema/Number.h"

namespace jsonschema {

namespace {

std::string_view const ELLIPSIS = "...";

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// The bytes of the character at the front of a string, 0 when they are not UTF-8.
size_t characterSize(std::string_view string) {
    static unsigned int const smallest[] = {0, 1, 0x80, 0x800, 0x10000};  // by the number of bytes
    unsigned int code = static_cast<unsigned char>(string[0]);
    size_t const size = code < 0x80   ? 1
                        : code < 0xC0 ? 0
                        : code < 0xE0 ? 2
                        : code < 0xF0 ? 3
                        : code < 0xF8 ? 4
                                      : 0;
    if (size == 0 || size > string.size()) {
        return 0;
    }
    code &= size == 1 ? 0x7FU : 0x7FU >> size;
    for (size_t i = 1; i < size; ++i) {
        if (!isContinuation(string[i])) {
            return 0;
        }
        code = code << 6 | (static_cast<unsigned char>(string[i]) & 0x3FU);
    }
    bool const isSurrogate = code >= 0xD800 && code < 0xE000;
    return code >= smallest[size] && code < 0x110000 && !isSurrogate ? size : 0;
}

}  // namespace

void Text::append(std::string_view character) {
    if (length_ + character.size() >= size_) {
        isCut_ = true;
        length_ = whole_;
        character = ELLIPSIS;
    }
    assert(whole_ <= length_ && length_ + character.size() < size_);
    memcpy(buffer_ + length_, character.data(), character.size());
    length_ += character.size();
    buffer_[length_] = '\0';
    if (length_ + ELLIPSIS.size() < size_) {
        whole_ = length_;
    }
}

Text& Text::add(std::string_view string) {
    while (!string.empty() && !isCut_) {
        size_t const size = characterSize(string);
        append(size == 0 ? "?" : string.substr(0, size));
        string.remove_prefix(size == 0 ? 1 : size);
    }
    return *this;
}

Text& Text::add(size_t number) {
    char digits[24];
    char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return add({digits, static_cast<size_t>(end - digits)});
}

Text& Text::add(Number const& number) {
    char digits[Number::DIGITS];
    size_t const length = number.print(digits);
    return add({digits, length});
}

Text& Text::addQuoted(std::string_view string) { return add("\"").add(string).add("\""); }

Text& Text::addValue(json_object* value) {
    switch (json_object_get_type(value)) {
        case json_type_null: return add("null");
        case json_type_boolean: return add(json_object_get_boolean(value) ? "true" : "false");
        case json_type_int:
        case json_type_double: return add(Number(value));
        case json_type_string: return addQuoted(textOf(value));
        case json_type_array: return add("a certain array");
        case json_type_object: return add("a certain object");
    }
    return *this;
}

bool Text::addStep(std::string_view separator, std::string_view step) {
    size_t const before = length_;
    add(separator).add(step);
    if (isCut_) {
        length_ = before;
        buffer_[before] = '\0';
    }
    return !isCut_;
}

}  // namespace jsonschema
