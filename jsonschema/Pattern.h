// Compiles and matches regular expressions with bounded work.
#ifndef JSONSCHEMA_PATTERN_H
#define JSONSCHEMA_PATTERN_H

#include <string_view>

#include "jsonschema/Budget.h"

struct pcre2_real_code_8;

namespace jsonschema {

class Pattern {
  public:
    // Compiles `pattern`, whose characters must outlive the object; see isValid. A pattern that
    // exceeds the limits makes the call undecided.
    Pattern(std::string_view pattern, Budget& budget);
    ~Pattern();
    Pattern(Pattern const&) = delete;
    Pattern& operator=(Pattern const&) = delete;

    bool isValid() const { return code_ != nullptr; }

    // Whether the pattern matches somewhere in `string`. A string that is not UTF-8, and a match
    // that takes more than the budget, make the call undecided.
    bool matches(std::string_view string, Budget& budget) const;

  private:
    std::string_view pattern_;
    pcre2_real_code_8* code_;
};

}  // namespace jsonschema

#endif
