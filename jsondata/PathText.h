// The text of a path that grows and shrinks with a walk over a document.
#pragma once

#include <assert.h>
#include <json-c/json.h>
#include <stddef.h>

#include "jsondata/JsonChildren.h"

namespace vobiutils {

// Whether a token of a path can be this name: it is not empty, has no dot, and does not look like an
// index.
bool isNameable(char const* name);

class PathText {
  public:
    PathText() = default;
    ~PathText();
    PathText(PathText const&) = delete;
    PathText& operator=(PathText const&) = delete;

    // Appends a step. False when out of memory.
    bool push(Step step);

    size_t length() const { return length_; }
    void cut(size_t length) {  // to a length that it had
        assert(length <= length_);
        length_ = length;
    }

    // The path as a new json-c string; null when out of memory.
    json_object* newString() const;

  private:
    bool append(char const* piece);

    char* text_ = nullptr;
    size_t length_ = 0;
    size_t capacity_ = 0;
};

}  // namespace vobiutils
