#define PCRE2_CODE_UNIT_WIDTH 8
#include "Pattern.h"

#include <pcre2.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <memory>

namespace {

// As close to ECMA 262 as PCRE2 gets.
uint32_t const OPTIONS = PCRE2_UTF | PCRE2_DOLLAR_ENDONLY | PCRE2_ALT_BSUX |
                         PCRE2_ALLOW_EMPTY_CLASS | PCRE2_MATCH_UNSET_BACKREF |
                         PCRE2_NEVER_BACKSLASH_C |
                         // every part of a pattern reports each time it is tried
                         PCRE2_AUTO_CALLOUT;

PCRE2_SPTR bytes(std::string_view text) {
    return reinterpret_cast<PCRE2_SPTR>(text.empty() ? "" : text.data());
}

// Charges a match for what it does: a step for each part of the pattern it tries, and more for what
// that part reads of the text.
class Meter {
  public:
    Meter(std::string_view pattern, Budget& budget) : pattern_(pattern), budget_(budget) {}

    static int onPart(pcre2_callout_block* at, void* meter) {
        return static_cast<Meter*>(meter)->charge(*at) ? 0 : PCRE2_ERROR_CALLOUT;
    }

  private:
    bool charge(pcre2_callout_block const& at) {
        size_t const position = at.current_position;
        size_t const taken = position > last_ ? position - last_ : 0;
        size_t const ahead = std::min(at.subject_length - position, readInVain(partAt(at)));
        last_ = position;
        return budget_.spend(1 + (taken + ahead) / 8);
    }

    std::string_view partAt(pcre2_callout_block const& at) const {
        return pattern_.substr(at.pattern_position, at.next_item_length);
    }

    // What a part has taken shows in the position after it. Only a counted repetition and a reference
    // back can read much and then fail, which shows nowhere: the most that they can read so.
    static size_t readInVain(std::string_view part) {
        size_t const count = part.rfind('{');
        if (count != part.npos) {
            return strtoul(part.data() + count + 1, nullptr, 10);
        }
        bool const isReference =
            part.size() > 1 && part[0] == '\\' && strchr("123456789gk", part[1]) != nullptr;
        return isReference ? SIZE_MAX : 0;
    }

    std::string_view pattern_;
    Budget& budget_;
    size_t last_ = 0;
};

template <typename T, void (*release)(T*)>
struct Release {
    void operator()(T* object) const { release(object); }
};

typedef std::unique_ptr<pcre2_compile_context,
                        Release<pcre2_compile_context, pcre2_compile_context_free>>
    CompileContext;
typedef std::unique_ptr<pcre2_match_context, Release<pcre2_match_context, pcre2_match_context_free>>
    MatchContext;
typedef std::unique_ptr<pcre2_match_data, Release<pcre2_match_data, pcre2_match_data_free>>
    MatchData;

}  // namespace

Pattern::Pattern(std::string_view text, Budget& budget) : pattern_(text), code_(nullptr) {
    CompileContext const context(pcre2_compile_context_create(nullptr));
    if (!context || text.size() > limits::PATTERN_LENGTH || !budget.spend(50 + text.size())) {
        budget.giveUp();
        return;
    }
    pcre2_set_parens_nest_limit(context.get(), limits::PATTERN_NESTING);
    int error = 0;
    PCRE2_SIZE position = 0;
    code_ = pcre2_compile(bytes(text), text.size(), OPTIONS, &error, &position, context.get());
    size_t size = 0;
    if (code_ != nullptr && pcre2_pattern_info(code_, PCRE2_INFO_SIZE, &size) == 0) {
        budget.spend(size / 8);  // a short pattern can compile to a long one
    }
}

Pattern::~Pattern() { pcre2_code_free(code_); }

bool Pattern::matches(std::string_view text, Budget& budget) const {
    MatchContext const context(pcre2_match_context_create(nullptr));
    MatchData const data(pcre2_match_data_create(1, nullptr));
    if (!context || !data || !budget.spend(10 + text.size() / 8)) {
        budget.giveUp();
        return false;
    }
    pcre2_set_heap_limit(context.get(), limits::PATTERN_MEMORY);
    Meter meter(pattern_, budget);
    pcre2_set_callout(context.get(), Meter::onPart, &meter);
    int const result =
        pcre2_match(code_, bytes(text), text.size(), 0, 0, data.get(), context.get());
    if (result >= 0) {
        return true;
    }
    if (result != PCRE2_ERROR_NOMATCH) {
        budget.giveUp();
    }
    return false;
}
