// Patterns on PCRE2.
//
// PCRE2 backtracks, so a short pattern can take very long. Every pattern is therefore compiled with
// a callout before each item, which charges the budget of the validation call (see Meter). Syntax
// that cannot be charged that way is refused before compiling (see EcmaSyntax).
#define PCRE2_CODE_UNIT_WIDTH 8
#include "jsonschema/Pattern.h"

#include <assert.h>
#include <pcre2.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <memory>

namespace jsonschema {

namespace {

uint32_t const OPTIONS = PCRE2_UTF | PCRE2_DOLLAR_ENDONLY | PCRE2_ALT_BSUX |
                         PCRE2_ALLOW_EMPTY_CLASS | PCRE2_MATCH_UNSET_BACKREF |
                         PCRE2_NEVER_BACKSLASH_C |
                         PCRE2_NO_AUTO_POSSESS |  // that optimization recurses on long patterns
                         PCRE2_AUTO_CALLOUT;      // calls Meter each time an item is tried

// Tests whether a pattern keeps to the syntax of ECMA 262. What PCRE2 accepts beyond that
// (recursion, conditions, verbs, flags, possessive repetition, further escapes) has another meaning
// or none in ECMA 262, and some of it cannot be metered.
class EcmaSyntax {
  public:
    explicit EcmaSyntax(std::string_view pattern) : rest_(pattern) {}

    bool holds() {
        while (!rest_.empty()) {
            if (!takeOne()) {
                return false;
            }
        }
        return true;
    }

  private:
    bool takeOne() {
        char const c = rest_[0];
        bool const afterRepetition = afterRepetition_;
        afterRepetition_ = false;
        if (c == '\\') {
            return takeEscape();
        }
        if (inClass_) {
            inClass_ = c != ']';
            return !begins("[:") && !begins("[.") && !begins("[=") && take(1);
        }
        if (c == '(') {
            return takeGroup();
        }
        inClass_ = c == '[';
        afterRepetition_ = c == '*' || c == '+' || c == '}' || (c == '?' && !afterRepetition);
        return !(c == '+' && afterRepetition) && take(1);
    }

    bool takeEscape() {
        char const c = rest_.size() > 1 ? rest_[1] : '\0';
        bool const isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        return rest_.size() > 1 && (!isLetter || strchr("bBcdDfknpPrsStuvwWx", c) != nullptr) &&
               take(2);
    }

    bool takeGroup() {
        if (!begins("(?")) {
            return !begins("(*") && take(1);
        }
        bool const isName = begins("(?<") && rest_.size() > 3 && rest_[3] != '\'';
        return (begins("(?:") || begins("(?=") || begins("(?!") || isName) && take(3);
    }

    bool begins(std::string_view text) const { return rest_.substr(0, text.size()) == text; }

    bool take(size_t count) {
        assert(count <= rest_.size());
        rest_.remove_prefix(count);
        return true;
    }

    std::string_view rest_;
    bool inClass_ = false;
    bool afterRepetition_ = false;
};

PCRE2_SPTR bytes(std::string_view string) {
    return reinterpret_cast<PCRE2_SPTR>(string.empty() ? "" : string.data());
}

// Charges a match for its work: for each item of the pattern that is tried, for the characters that
// the item reads, and for the captures that are copied along.
class Meter {
  public:
    Meter(std::string_view pattern, size_t frameSize, Budget& budget)
        : pattern_(pattern), frameSize_(frameSize), budget_(budget) {}

    static int onItem(pcre2_callout_block* at, void* meter) {
        return static_cast<Meter*>(meter)->charge(*at) ? 0 : PCRE2_ERROR_CALLOUT;
    }

  private:
    static size_t const LONG_CLASS = 64;  // bytes

    bool charge(pcre2_callout_block const& at) {
        std::string_view const item = pattern_.substr(at.pattern_position, at.next_item_length);
        size_t const position = at.current_position;
        assert(position <= at.subject_length);
        size_t const taken = position > lastPosition_ ? position - lastPosition_ : 0;
        size_t const ahead = std::min(at.subject_length - position, readInVain(item));
        size_t const weight = 1 + item.size() / 16;  // a long class costs that for each character
        size_t const read = taken * lastWeight_ + ahead * weight;
        lastPosition_ = position;
        lastWeight_ = weight;
        return budget_.spend(weight + frameSize_ / 512 + read / 8);
    }

    // The most that an item can read before it fails without a trace.
    //
    // What an item consumed is normally visible afterwards, in the match position of the next
    // callout. A counted repetition or a back-reference can read far ahead and then fail, which
    // leaves no trace; and for a long character class the charge would come too late. So these are
    // charged in advance.
    static size_t readInVain(std::string_view item) {
        if (item.size() > 1 && item[0] == '\\' && strchr("123456789k", item[1]) != nullptr) {
            return SIZE_MAX;
        }
        if (item.size() > LONG_CLASS && item[0] == '[') {
            return SIZE_MAX;
        }
        size_t const count = item.rfind('{');
        return count != item.npos ? strtoul(item.data() + count + 1, nullptr, 10) : 0;
    }

    std::string_view pattern_;
    size_t frameSize_;
    Budget& budget_;
    size_t lastPosition_ = 0;
    size_t lastWeight_ = 1;
};

// Whether a pattern was refused for its size, and not because it is malformed.
bool isLimit(int error) {
    switch (error) {
        case PCRE2_ERROR_PARENTHESES_NEST_TOO_DEEP:
        case PCRE2_ERROR_PATTERN_TOO_LARGE:
        case PCRE2_ERROR_HEAP_FAILED:
        case PCRE2_ERROR_LOOKBEHIND_TOO_COMPLICATED: return true;
        default: return false;
    }
}

template <typename T>
T infoOf(pcre2_code const* code, uint32_t what) {
    T value = 0;
    pcre2_pattern_info(code, what, &value);
    return value;
}

struct Release {
    void operator()(pcre2_compile_context* context) const { pcre2_compile_context_free(context); }
};

}  // namespace

bool MatchSpace::make() {
    if (context_ == nullptr) {
        context_ = pcre2_match_context_create(nullptr);
        data_ = pcre2_match_data_create(1, nullptr);
        if (context_ != nullptr) {
            pcre2_set_heap_limit(context_, limits::PATTERN_MEMORY);
        }
    }
    return context_ != nullptr && data_ != nullptr;
}

MatchSpace::~MatchSpace() {
    pcre2_match_data_free(data_);
    pcre2_match_context_free(context_);
}

Pattern::Pattern(std::string_view pattern, Budget& budget, Pattern* previous)
    : pattern_(pattern), previous_(previous) {
    std::unique_ptr<pcre2_compile_context, Release> const context(
        pcre2_compile_context_create(nullptr));
    if (!context || pattern.size() > limits::PATTERN_LENGTH || !budget.spend(50 + pattern.size())) {
        budget.giveUp();
        return;
    }
    if (!EcmaSyntax(pattern).holds()) {
        return;
    }
    pcre2_set_parens_nest_limit(context.get(), limits::PATTERN_NESTING);
    pcre2_set_newline(context.get(), PCRE2_NEWLINE_ANYCRLF);
    pcre2_set_compile_extra_options(context.get(), PCRE2_EXTRA_ALT_BSUX);
    int error = 0;
    PCRE2_SIZE position = 0;
    code_ =
        pcre2_compile(bytes(pattern), pattern.size(), OPTIONS, &error, &position, context.get());
    if (code_ == nullptr
            ? isLimit(error)
            : infoOf<uint32_t>(code_, PCRE2_INFO_MAXLOOKBEHIND) > limits::PATTERN_LOOKBEHIND) {
        budget.giveUp();
    }
    if (code_ != nullptr) {
        // a short pattern can compile to much code: repetitions of groups are copied out
        budget.spend(infoOf<size_t>(code_, PCRE2_INFO_SIZE) / 8);
        frameSize_ = infoOf<size_t>(code_, PCRE2_INFO_FRAMESIZE);
    }
}

Pattern::~Pattern() { pcre2_code_free(code_); }

bool Pattern::matches(std::string_view string, MatchSpace& space, Budget& budget) const {
    if (!space.make() || !budget.spend(10 + string.size() / 8)) {
        budget.giveUp();
        return false;
    }
    Meter meter(pattern_, frameSize_, budget);
    pcre2_set_callout(space.context_, Meter::onItem, &meter);
    int const result =
        pcre2_match(code_, bytes(string), string.size(), 0, 0, space.data_, space.context_);
    if (result < 0 && result != PCRE2_ERROR_NOMATCH) {
        budget.giveUp();
    }
    return result >= 0;
}

}  // namespace jsonschema
