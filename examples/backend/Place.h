// A place in a database, who asks for it, on what conditions, and what of it may be seen and changed. The
// conditions are those on the version that a request meets (If-Match, If-None-Match); entity tags name versions.
#pragma once

#include <cstdint>
#include <optional>

#include "Reply.h"

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

struct Place {
    unsigned int type;
    std::string path;  // JsonData::isPath
    Session const& session;
    Conditions conditions;
};

// Whether members of that name are left out of what is sent: the passwords of the gateway's users
// always, others unless an administrator asks.
bool isSecret(Place const& place, std::string const& name);

// Removes the secrets in a copy of the value at the place, or in the whole database.
void removeSecrets(Place const& place, TreeMapObject& copy);

// Throws the refusal of a place whose path leads through a secret.
void requireVisible(Place const& place);

// Throws the refusal of a place that cannot be written to.
void requireWritable(Place const& place);
