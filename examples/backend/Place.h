// A place in a database, with the session that asks for it and the request's conditions (If-Match, If-None-Match) on the
// version of the database; and the rules about what may be seen and changed there.
#pragma once

#include <cstdint>
#include <optional>

#include "Reply.h"

// The entity tag of what a request names: nullopt if it does not exist, "" if its version is unknown.
typedef std::optional<std::string> EntityTag;

// Returns the entity tag of a version. A user who sees everything and one who sees only a part get different values, and
// so different tags. "" for version 0, which means that there is none.
std::string tagOf(std::uint64_t version, bool seesAll);

struct Conditions {
    std::string ifMatch;  // the headers' values, comma-separated; "" if there is none
    std::string ifNoneMatch;

    // Returns whether If-Match allows the tag. Weak tags in it never match.
    bool isWanted(EntityTag const& tag) const;
    // Returns whether If-None-Match names the tag; weak tags match, too.
    bool isKnown(EntityTag const& tag) const;
    // Returns whether If-Match names versions, so that a request that passes knows the current one.
    bool namesVersion() const { return !ifMatch.empty() && ifMatch != "*"; }
};

struct Place {
    unsigned int type;
    std::string path;  // JsonData::isPath
    Session const& session;
    Conditions conditions;
};

// Returns whether members of that name are left out of answers: password hashes of the gateway's users always, other
// passwords and keys unless an administrator asks.
bool isSecret(Place const& place, std::string const& name);

// Removes the secrets from a copy of the value at the place, or of the whole database.
void removeSecrets(Place const& place, TreeMapObject& copy);

// Throws 403 if the path leads through a secret.
void requireVisible(Place const& place);

// Throws 403 if the session may not write there.
void requireWritable(Place const& place);
