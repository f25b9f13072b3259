// Regular expressions with a bounded effort.
#ifndef JSONSCHEMA_PATTERN_H
#define JSONSCHEMA_PATTERN_H

#include <string_view>

#include "jsonschema/Budget.h"

struct pcre2_real_code_8;

namespace jsonschema {

class Pattern {
  public:
    // Compiles; see isValid. The text must outlive the pattern. A pattern over the limits leaves
    // the call undecided.
    Pattern(std::string_view text, Budget& budget);
    ~Pattern();
    Pattern(Pattern const&) = delete;
    Pattern& operator=(Pattern const&) = delete;

    bool isValid() const { return code_ != nullptr; }

    // Whether it matches somewhere in the text. Text that is not UTF-8, and a match that takes more
    // than is left, leave the call undecided.
    bool matches(std::string_view text, Budget& budget) const;

  private:
    std::string_view pattern_;
    pcre2_real_code_8* code_;
};

}  // namespace jsonschema

#endif
