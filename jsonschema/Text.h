// Writes English and JSON into a buffer of fixed size, as NUL-terminated valid UTF-8.
#pragma once

#include <json-c/json.h>
#include <stddef.h>

#include <string_view>

namespace jsonschema {

class Number;

class Text {
  public:
    template <size_t SIZE>
    explicit Text(char (&buffer)[SIZE]) : Text(buffer, SIZE) {}
    Text(char* buffer, size_t size) : buffer_(buffer), size_(size) { buffer_[0] = '\0'; }

    // Bytes that are not UTF-8, and NUL, become question marks. What does not fit is left out, with
    // all that follows, and "..." says so.
    Text& add(std::string_view string);
    Text& add(Number const& number);
    Text& add(size_t number);
    Text& addQuoted(std::string_view string);
    Text& addValue(json_object* value);  // containers only by their kind

    // Adds a step of a path as a whole, or nothing and false.
    bool addStep(std::string_view separator, std::string_view step);

  private:
    void append(std::string_view character);

    char* buffer_;
    size_t size_;
    size_t length_ = 0;
    size_t whole_ = 0;  // up to here there is room for "..."
    bool isCut_ = false;
};

}  // namespace jsonschema
