// A path into a database as clients may write it: the library's own, but with nothing in it that
// could be read in two ways.
#ifndef BACKEND_PATH_H
#define BACKEND_PATH_H

#include <optional>
#include <string>
#include <vector>

// Whether a text that a client has sent is UTF-8 without control characters: with one, the same text
// could mean two things to those who read it by its length and by its end.
bool isPlainText(std::string const& text);

class Path {
  public:
    // Nothing for a path with empty or long names, too many tokens, or an index that is not "[n]" in
    // plain decimal digits.
    static std::optional<Path> parse(std::string const& text);

    static bool isIndex(std::string const& token) { return token.front() == '['; }

    bool isRoot() const { return tokens.empty(); }
    bool hasIndex() const;
    std::string const& last() const { return tokens.back(); }
    unsigned int lastIndex() const { return indexOf(last()); }
    Path parent() const;
    std::string text() const;

    static unsigned int indexOf(std::string const& token);

    std::vector<std::string> tokens;
};

#endif
