// Checks that a text is exactly one JSON value, and finds where it is not. Builds nothing.
#pragma once

#include <json-c/json.h>
#include <stddef.h>

#include <string_view>

namespace vobiutils {

// One pass over the text, by recursive descent. Each function consumes what it is named after, and
// returns false, with the fault set, where the text is something else.
class StrictScan {
  public:
    // Remembering names takes memory and time, and is only needed to find out which one an object
    // has twice: a parsed document that has fewer values than the text tells that one has.
    enum Names { ANY, ONCE };

    // Of a text shorter than half of INT_MAX.
    StrictScan(std::string_view text, Names names)
        : names_(names), at_(text.data()), end_(at_ + text.size()) {}

    bool run();

    // After a run that succeeded: how many values the text consists of.
    size_t values() const { return values_; }

    // After a run that failed.
    char const* position() const { return at_; }
    char const* reason() const { return reason_; }  // null when out of memory

  private:
    bool value(int depth);
    bool container(int depth, char end);
    bool name(json_object* known);
    bool isNew(char const* quoted, json_object* known);
    bool string();
    bool character(unsigned char first);
    bool escape();
    bool codeUnit(unsigned int& unit);
    bool number();
    bool digits();
    bool word(std::string_view wanted);

    void skipSpace();
    bool take(char c);
    // The next character; the NUL at the end, and one in the text, are not part of any value.
    char next() const { return at_ < end_ ? *at_ : '\0'; }
    bool fail(char const* reason) { return failAt(at_, reason); }
    bool failAt(char const* position, char const* reason);

    Names const names_;
    char const* at_;
    char const* const end_;
    size_t values_ = 0;
    char const* reason_ = nullptr;
};

}  // namespace vobiutils
