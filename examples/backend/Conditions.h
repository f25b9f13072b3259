// What a request requires of the version that it meets (If-Match, If-None-Match), and the entity tags
// that name versions.
#ifndef BACKEND_CONDITIONS_H
#define BACKEND_CONDITIONS_H

#include <cstdint>
#include <optional>
#include <string>

// Of what a request names: nothing when there is no such thing, "" when there is one of unknown version.
typedef std::optional<std::string> EntityTag;

// The tag of a version for those who may see everything, or only a part: what they get differs. "" for
// the version 0, which is none.
std::string tagOf(std::uint64_t version, bool seesAll);

struct Conditions {
    std::string ifMatch;  // values of the headers, with commas between several; "" for none
    std::string ifNoneMatch;

    // Whether If-Match allows what has this tag. A weak tag in it never does.
    bool isWanted(EntityTag const& tag) const;
    // Whether If-None-Match names what has this tag, also by a weak tag.
    bool isKnown(EntityTag const& tag) const;
    // Whether If-Match names versions: who is let through by it knows the version that it meets.
    bool namesVersion() const { return !ifMatch.empty() && ifMatch != "*"; }
};

#endif
