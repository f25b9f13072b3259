// The path language as text: splits a path into tokens and reads the number of an index token.
// Nothing here depends on a document.
#pragma once

#include <assert.h>
#include <limits.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string_view>

namespace vobiutils {

// One step of a path: a slice of the caller's NUL-terminated string, which has to outlive it. As
// the string goes on to its terminator, the character after the slice may always be read.
class PathToken {
  public:
    PathToken() : PathToken("") {}
    explicit PathToken(std::string_view slice) : slice_(slice) {}

    std::string_view text() const { return slice_; }
    char const* start() const { return slice_.data(); }
    char const* end() const { return slice_.data() + slice_.size(); }

    // True when the string ends with the token: start() is then the token as a C string.
    bool isTerminated() const { return *end() == '\0'; }

    bool isIndex() const { return *start() == '['; }

    // With start(), the two arguments of "%.*s"; see TOKEN_ARGS. The width of a token of 2 GiB may be
    // negative, which prints the rest of the string.
    int width() const { return static_cast<int>(slice_.size()); }

  private:
    std::string_view slice_;
};

// A token as the arguments of "%.*s" in a log line.
#define TOKEN_ARGS(token) (token).width(), (token).start()

// Walks over the tokens of a path that is not empty:
//
//   for (PathCursor at(path);; at.advance()) {
//       ... at.token() ...
//       if (at.isLast()) ...
//   }
class PathCursor {
  public:
    explicit PathCursor(char const* path) : token_(tokenAt(path)) {}

    PathToken token() const { return token_; }
    int index() const { return index_; }

    // A dot at the very end adds no token.
    bool isLast() const { return token_.isTerminated() || token_.end()[1] == '\0'; }

    void advance() {
        assert(!isLast());
        ++index_;
        token_ = tokenAt(token_.end() + 1);
    }

  private:
    // strchrnul and not strcspn, which takes a tenth to a fifth longer per path.
    static PathToken tokenAt(char const* rest) {
        return PathToken({rest, static_cast<size_t>(strchrnul(rest, '.') - rest)});
    }

    PathToken token_;
    int index_ = 0;
};

// The number of an index token, -1 when it has fewer than 3 characters. The number is what is
// between the first and the last character (the last need not be "]"), read as stream extraction
// reads an unsigned int: white space around it is skipped, a sign is accepted and "-1" wraps, a
// number too large gives 4294967295, and no number at all 0. Characters left over are reported on
// standard output.
int64_t indexOf(PathToken token);

// A NUL-terminated copy of the token, to be released with free(); null when out of memory.
char* duplicate(PathToken token);

}  // namespace vobiutils
