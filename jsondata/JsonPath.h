// The path language as text: a path into its tokens, an index token into its number.
// Nothing here knows a document.
#ifndef VOBIUTILS_JSONDATA_JSONPATH_H
#define VOBIUTILS_JSONDATA_JSONPATH_H

#include <limits.h>
#include <stddef.h>
#include <string.h>

#include <string_view>

// One step of a path: a piece of a terminated text, used in place.
class PathToken {
  public:
    PathToken() = default;
    PathToken(char const* start, char const* end) : start_(start), end_(end) {}
    explicit PathToken(std::string_view text)
        : start_(text.data()), end_(text.data() + text.size()) {}

    std::string_view text() const { return {start_, static_cast<size_t>(end_ - start_)}; }

    char const* start() const { return start_; }
    char const* end() const { return end_; }

    // The text ends where the token does, which can then be used as it stands.
    bool isTerminated() const { return *end_ == '\0'; }

    bool isIndex() const { return *start_ == '['; }

    // An index token must have something between its first and its last character.
    bool hasIndexNumber() const { return end_ - start_ >= 3; }

    // The text between them; the last character need not be "]".
    std::string_view indexNumberText() const { return text().substr(1, text().size() - 2); }

    // With start(), the two arguments of "%.*s"; see TOKEN_ARGS.
    int width() const {
        return end_ - start_ < INT_MAX ? static_cast<int>(end_ - start_) : INT_MAX;
    }

  private:
    char const* start_ = "";
    char const* end_ = start_;
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
    explicit PathCursor(char const* path) : end_(path + strlen(path)), token_(tokenAt(path)) {}

    PathToken token() const { return token_; }
    int index() const { return index_; }

    // A dot at the very end adds no token.
    bool isLast() const { return token_.isTerminated() || *(token_.end() + 1) == '\0'; }

    void advance() {
        ++index_;
        token_ = tokenAt(token_.end() + 1);
    }

  private:
    PathToken tokenAt(char const* text) const {
        void const* const dot = memchr(text, '.', static_cast<size_t>(end_ - text));
        return {text, dot != nullptr ? static_cast<char const*>(dot) : end_};
    }

    char const* end_;
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
