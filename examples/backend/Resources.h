// Reads and changes the nine databases. Each change is one transaction: if it cannot be made, or would make the database
// invalid, nothing changes and the function throws the refusal.
//
// A change is in the data file before the answer is sent. Changes go through the default controller, one after another;
// ReadResources.cpp explains what a session reads.
//
// Every answer with a value carries the version of the database as its entity tag; after a change, that is the new
// version. A request whose conditions do not hold gets 412 and changes nothing; a read of a version that the client has
// already gets 304.
#pragma once

#include <LocalDbTransaction.h>

#include <functional>
#include <type_traits>

#include "Place.h"

// Answers with the value at the place, without the secrets that isSecret names.
Reply readResource(Place const& place);

// Answers with an array of the objects below the place whose member `key` has that value: a string, or a JSON number or
// Boolean.
Reply findResources(Place const& place, std::string const& key, std::string const& value);

// Answers with all databases, {TYPE: {"etag": ..., "value": ..., "schema": ...}}, each value as from readResource. For a
// database that cannot be read it is {"error": ...}.
Reply readEverything(Request const& request);

// Changes the value at the place and answers with the new one:
// - PUT replaces the value by the body, or adds a member. If the label tables have a message that changes this place, the
//   body is that message, and only the members that it names change. 200 or 201.
// - PATCH merges the body into the value, or into the whole database (RFC 7396). 200 or 201.
// - POST appends the body to an array. An object without an "id" gets the next one if all elements have one. 201.
// - DELETE removes a member or an element. 204.
Reply changeResource(Place const& place, std::string const& method, std::string const& body);

// Throws the refusal that belongs to the status of a transaction or snapshot that has no document.
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

// Changes the document of the database, and those of other databases that it locks as well. Throws a refusal.
typedef std::function<void(LocalDbTransaction& database)> Change;

// Applies the change in the default controller and saves it. From then on, the session reads the database as it is saved.
// Returns the new version.
std::uint64_t changeDatabase(
    unsigned int type, Session const& session, Change const& change,
    char const* unsaved = "the change could not be saved; nothing is changed");

// Switches the guest network on or off; the body is {"enabled": true | false}. Its Wi-Fi, its addresses and its firewall
// change together or not at all. 204.
Reply switchGuestNetwork(Request const& request);

// Some places are read or changed by a message of the label tables. If a message, or the database after a change, is not
// valid, the refusal is {"error": message, "hint": ..., "path": ..., "keyword": ..., "in": "body" or "database",
// "type": ...}. "path" leads into the body, or into the database of that API type; "hint" is the schema's description of
// the value, if it has one.

// Returns the label of the message that the method uses at exactly this place; null if there is none.
char const* messageOf(std::string const& method, unsigned int type, std::string const& path);

// Returns the path of the database's schema file, which need not exist.
std::string schemaFileOf(unsigned int type);

// Throws 400 if the body is not valid by the message's schema file, 500 if that file cannot be used. Without the file,
// every body is valid.
void requireRequest(unsigned int type, char const* label, TreeMapObject& body);

// Throws 500 if the answer is not valid by the message's schema file, and BEConfig::VALIDATION_ON_RESPONSE is set.
void requireResponse(unsigned int type, char const* label, TreeMapObject& value);

// Returns the refusal of a change that would make the database invalid: 400, or 500 if it was not valid before, or its
// schema file cannot be used.
Reply refuseDocument(LocalDbTransaction::Fault const& fault);
