// The path language as text: a path into its tokens, an index token into its number.
// Nothing here knows a document.
#ifndef VOBIUTILS_JSONDATA_JSONPATH_H
#define VOBIUTILS_JSONDATA_JSONPATH_H

#include <limits.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <string_view>

namespace vobiutils {

// One step of a path: a piece of a terminated text, used in place. The last token ends where the text
// does, and is measured only when somebody asks.
class PathToken {
  public:
    PathToken() = default;

    // What is there up to the dot, or all when that is null.
    explicit PathToken(char const* start, char const* dot = nullptr)
        : start_(start), length_(dot != nullptr ? dot - start : TO_THE_END) {}

    char const* start() const { return start_; }

    // The text ends where the token does, which can then be used as it stands.
    bool isTerminated() const { return length_ == TO_THE_END; }

    // Of a token that is not terminated: it ends at a dot.
    char const* dot() const { return start_ + length_; }

    std::string_view text() const {
        return isTerminated() ? std::string_view(start_)
                              : std::string_view(start_, static_cast<size_t>(length_));
    }

    // For a place in the token, or behind its last character.
    bool endsAt(char const* place) const {
        return isTerminated() ? *place == '\0' : place == dot();
    }

    bool isEmpty() const { return endsAt(start_); }
    bool isIndex() const { return *start_ == '['; }

    // With start(), the two arguments of "%.*s", which prints all when the width is negative; see
    // TOKEN_ARGS.
    int width() const { return static_cast<int>(std::min<ptrdiff_t>(length_, INT_MAX)); }

  private:
    static ptrdiff_t const TO_THE_END = -1;

    char const* start_ = "";
    ptrdiff_t length_ = TO_THE_END;
};

// A token as the arguments of "%.*s" in a log line.
#define TOKEN_ARGS(token) (token).width(), (token).start()

// Walks over the tokens of a path that is not empty:
//
//   for (PathCursor step(path);; step.advance()) {
//       ... step.token() ...
//       if (step.isLast()) ...
//   }
class PathCursor {
  public:
    explicit PathCursor(char const* path) : token_(tokenAt(path)) {}

    PathToken token() const { return token_; }
    int index() const { return index_; }

    // A dot at the very end adds no token.
    bool isLast() const { return token_.isTerminated() || token_.dot()[1] == '\0'; }

    void advance() {
        ++index_;
        token_ = tokenAt(token_.dot() + 1);
    }

  private:
    static PathToken tokenAt(char const* text) { return PathToken(text, strchr(text, '.')); }

    PathToken token_;
    int index_ = 0;
};

// Reads an index number as stream extraction into an unsigned int does, white space around it
// skipped: a sign is accepted and "-1" wraps, a number too large gives 4294967295, and no number at
// all gives 0. Text left over is reported on standard output.
unsigned int BE_StrTo(std::string_view text);

// The number of an index token, between its first and its last character, which need not be "]"; -1
// when there is nothing between them.
int64_t indexFromText(PathToken token);

// The same: nearly every index is a few digits, which need no call.
inline int64_t indexOf(PathToken token) {
    ptrdiff_t const maxDigits = 9;  // more may be too large
    char const* const start = token.start() + 1;
    char const* at = start;
    unsigned int index = 0;
    for (; *at >= '0' && *at <= '9'; ++at) {
        index = index * 10 + static_cast<unsigned int>(*at - '0');
    }
    bool const isPlain =
        *at == ']' && at != start && at - start <= maxDigits && token.endsAt(at + 1);
    return isPlain ? index : indexFromText(token);
}

// The token as a text of its own, for free(); null without memory.
char* duplicate(PathToken token);

}  // namespace vobiutils

#endif
