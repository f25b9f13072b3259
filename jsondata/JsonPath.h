// The path language as text: a path into its tokens, an index token into its number.
// Nothing here knows a document.
#ifndef VOBIUTILS_JSONDATA_JSONPATH_H
#define VOBIUTILS_JSONDATA_JSONPATH_H

#include <limits.h>
#include <stddef.h>

#include <string_view>

// One step of a path: a piece of a terminated text, used in place.
class PathToken {
  public:
    PathToken() = default;
    explicit PathToken(std::string_view text) : text_(text) {}

    std::string_view text() const { return text_; }

    // The text ends where the token does, which can then be used as it stands.
    bool isTerminated() const { return *(start() + text_.size()) == '\0'; }

    bool isIndex() const { return !text_.empty() && text_.front() == '['; }

    // An index token must have something between its first and its last character.
    bool hasIndexNumber() const { return text_.size() >= 3; }

    // The text between them; the last character need not be "]".
    std::string_view indexNumberText() const { return {text_.data() + 1, text_.size() - 2}; }

    // The two arguments of "%.*s"; see TOKEN_ARGS.
    int width() const { return text_.size() < INT_MAX ? static_cast<int>(text_.size()) : INT_MAX; }
    char const* start() const { return text_.empty() ? "" : text_.data(); }

  private:
    std::string_view text_;
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
    explicit PathCursor(char const* path) : rest_(path) { cut(); }

    PathToken token() const { return token_; }
    int index() const { return index_; }

    // A dot at the very end adds no token.
    bool isLast() const { return *rest_ == '\0'; }

    void advance() {
        ++index_;
        cut();
    }

  private:
    // Tokens are short: a call would cost more. Nearly all that stands in them comes behind the dot
    // in the character set, so that one comparison each is enough.
    static char const* endOfToken(char const* text) {
        for (;; ++text) {
            while (static_cast<unsigned char>(*text) > '.') {
                ++text;
            }
            if (*text == '.' || *text == '\0') {
                return text;
            }
        }
    }

    void cut() {
        char const* const end = endOfToken(rest_);
        std::string_view const text(rest_, static_cast<size_t>(end - rest_));
        token_ = PathToken(text);
        rest_ = *end == '.' ? end + 1 : end;
    }

    char const* rest_;
    PathToken token_;
    int index_ = 0;
};

// Reads an index number as stream extraction into an unsigned int does, white space around it
// skipped: a sign is accepted and "-1" wraps, a number too large gives 4294967295, and no number at
// all gives 0. Text left over is reported on standard output.
unsigned int BE_StrTo(std::string_view text);

// The number of an index token. Nearly every one is a few digits, which need no call.
inline unsigned int indexOf(PathToken token) {
    std::string_view const text = token.indexNumberText();
    unsigned int number = 0;
    if (text.size() > 9) {  // it may be too large
        return BE_StrTo(text);
    }
    for (char const c : text) {
        unsigned int const digit = static_cast<unsigned int>(c) - '0';
        if (digit > 9) {
            return BE_StrTo(text);
        }
        number = number * 10 + digit;
    }
    return number;
}

#endif
