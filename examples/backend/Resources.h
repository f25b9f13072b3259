// The nine databases as resources: a place in them is read, changed, filled and emptied, each as one
// transaction. What cannot be done, or would make the database invalid, leaves nothing changed, and throws its
// refusal.
//
// What was written is in the data file before the answer goes out. Changes go through the default
// controller, one after another, and are read from the file; ReadResources.cpp says what a session sees.
//
// Answers with a value carry the version of its database as their entity tag, those to a change the
// version that it made. A request whose conditions do not hold is answered with 412 and changes
// nothing, or, if it would only read what the client has already, with 304.
#ifndef BACKEND_RESOURCES_H
#define BACKEND_RESOURCES_H

#include <LocalDbTransaction.h>

#include <cstdint>
#include <functional>
#include <string>

#include "Conditions.h"
#include "Reply.h"
#include "Sessions.h"

// A place in a database, who asks for it, and on what conditions.
struct Place {
    unsigned int type;
    std::string path;  // JsonData::isPath
    Session const& session;
    Conditions conditions;
};

// The value. Passwords are left out: those of the gateway's users always, others unless an
// administrator asks.
Reply readResource(Place const& place);

// The objects below the place with a member `key` of that value (a text, or a JSON number or
// Boolean), as an array.
Reply findResources(Place const& place, std::string const& key, std::string const& value);

// All databases: {TYPE: {"etag": ..., "value": ..., "schema": ...}}, each as readResource gives it, with
// {"error": ...} in place of one that cannot be read.
Reply readEverything(Session const& session);

// Changes the place, and answers with what is there now:
// - PUT stores the value in the body. Where a message changes the place, the body is that message and changes
//   the members it names; elsewhere a value is replaced, or a new member made. 200 or 201.
// - PATCH merges it into what is at the place, or into the whole database (RFC 7396): members replace others,
//   null removes one. 200 or 201.
// - POST appends it to an array. An object gets the next "id", where its neighbours have one. 201.
// - DELETE removes a member or an element. 204.
Reply changeResource(Place const& place, std::string const& method, std::string const& body);

// Why a database is not locked.
Reply refuseDatabase(LocalDbTransaction::Status status);

// Changes the document of a database, of which it gets the version as well, or throws a refusal.
typedef std::function<void(TreeMapObject& document, std::uint64_t version)> Change;

// Saves what the change makes of the shared document, which the session sees from then on. The new version.
std::uint64_t changeDatabase(unsigned int type, Session const& session, Change const& change);

// Switches the guest network on or off, {"enabled": true | false}: its Wi-Fi, its addresses and its firewall,
// all of them or none. 204.
Reply switchGuestNetwork(Session const& session, std::string const& body);

#endif
