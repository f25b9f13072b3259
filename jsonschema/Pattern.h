// Compiles and matches regular expressions with bounded work.
#pragma once

#include <string_view>

#include "jsonschema/Budget.h"

struct pcre2_real_code_8;
struct pcre2_real_match_context_8;
struct pcre2_real_match_data_8;

namespace jsonschema {

// What matching needs besides the pattern: made by the first match, used by one thread.
class MatchSpace {
  public:
    MatchSpace() = default;
    ~MatchSpace();
    MatchSpace(MatchSpace const&) = delete;
    MatchSpace& operator=(MatchSpace const&) = delete;

  private:
    friend class Pattern;
    bool make();  // false when out of memory

    pcre2_real_match_context_8* context_ = nullptr;
    pcre2_real_match_data_8* data_ = nullptr;
};

class Pattern {
  public:
    // Compiles `pattern`, whose characters must outlive the object; see isValid. A pattern that
    // exceeds the limits makes the call undecided.
    Pattern(std::string_view pattern, Budget& budget, Pattern* previous = nullptr);
    ~Pattern();
    Pattern(Pattern const&) = delete;
    Pattern& operator=(Pattern const&) = delete;

    bool isValid() const { return code_ != nullptr; }

    Pattern* previous() const { return previous_; }
    std::string_view text() const { return pattern_; }

    // Whether the pattern matches somewhere in `string`. A string that is not UTF-8, and a match
    // that takes more than the budget, make the call undecided.
    bool matches(std::string_view string, MatchSpace& space, Budget& budget) const;

  private:
    std::string_view pattern_;
    pcre2_real_code_8* code_ = nullptr;
    Pattern* previous_;
    size_t frameSize_ = 0;
};

}  // namespace jsonschema
