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
#pragma once

#include <LocalDbTransaction.h>

#include <functional>
#include <type_traits>

#include "Place.h"

// The value. Passwords are left out: those of the gateway's users always, others unless an
// administrator asks.
Reply readResource(Place const& place);

// The objects below the place with a member `key` of that value (a text, or a JSON number or
// Boolean), as an array.
Reply findResources(Place const& place, std::string const& key, std::string const& value);

// All databases: {TYPE: {"etag": ..., "value": ..., "schema": ...}}, each as readResource gives it, with
// {"error": ...} in place of one that cannot be read.
Reply readEverything(Request const& request);

// Changes the place, and answers with what is there now:
// - PUT stores the value in the body. Where a message changes the place, the body is that message and changes
//   the members it names; elsewhere a value is replaced, or a new member made. 200 or 201.
// - PATCH merges it into what is at the place, or into the whole database (RFC 7396): members replace others,
//   null removes one. 200 or 201.
// - POST appends it to an array. An object gets the next "id", where its neighbours have one. 201.
// - DELETE removes a member or an element. 204.
Reply changeResource(Place const& place, std::string const& method, std::string const& body);

// Throws why a transaction or a snapshot has nothing to read.
template <typename Database>
void requireReadable(Database const& database) {
    auto const status = database.status();
    require(status != Database::NO_MEMORY, 503, "out of memory", 1);
    require(status != Database::NO_FILE, 404, "no such database");
    if constexpr (std::is_same_v<Database, LocalDbTransaction>) {
        require(status != Database::BUSY, 503, "the database is busy", 1);
        require(status != Database::NO_NODE, 404, "nothing at this path");
    }
    require(static_cast<bool>(database), 500, "the database cannot be read");
}

// Changes the document of a database, and of others that it locks beside it, or throws a refusal.
typedef std::function<void(LocalDbTransaction& database)> Change;

// Saves what the change makes of the shared document, which the session sees from then on. The new version.
std::uint64_t changeDatabase(
    unsigned int type, Session const& session, Change const& change,
    char const* unsaved = "the change could not be saved; nothing is changed");

// Switches the guest network on or off, {"enabled": true | false}: its Wi-Fi, its addresses and its firewall,
// all of them or none. 204.
Reply switchGuestNetwork(Request const& request);

// Requests stand for messages, each of which belongs to a place of the databases. A refusal for a fault in one, or in
// what it would make of a database, is {"error": message, "hint": ..., "path": ..., "keyword": ..., "in": "body" or
// "database", "type": ...}. "in" and the API type say what the path leads into; the hint is the schema's description
// of the value, if it has one.

// The message that changes exactly this place, or the one that it is read by, as a name of the label tables;
// null when it is a plain value.
char const* messageOf(std::string const& method, unsigned int type, std::string const& path);

// The file beside a database that says what its document may be.
std::string schemaFileOf(unsigned int type);

// Throws the refusal of a body that is not that message, by its schema file: 400, and 500 when that cannot be
// used. Any is valid when there is no such file.
void requireRequest(unsigned int type, char const* label, TreeMapObject& body);

// Throws 500 for an answer that is not that message, where BEConfig::VALIDATION_ON_RESPONSE wants to know.
void requireResponse(unsigned int type, char const* label, TreeMapObject& value);

// Says why a changed database was not saved: 400, and 500 when it was not valid before the change, or its
// schema file cannot be used.
Reply refuseDocument(LocalDbTransaction::Fault const& fault);
