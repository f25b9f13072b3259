// Changes a database: PUT, PATCH, POST and DELETE at a place.
#include <JsonData.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <set>

#include "Limits.h"
#include "Resources.h"

namespace {

int64_t const MAX_ID = (INT64_C(1) << 53) - 1;  // JavaScript cannot represent every larger integer

bool hasIndex(std::string const& path) { return ("." + path).find(".[") != std::string::npos; }

std::string join(std::string const& path, std::string const& step) {
    return path.empty() ? step : path + "." + step;
}

// Percent-encodes a path for a URL.
std::string encode(std::string const& path) {
    std::string encoded;
    for (char const c : path) {
        char code[4] = {c, '\0'};
        auto const byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) == 0 && std::strchr("/-._~", c) == nullptr) {
            std::snprintf(code, sizeof(code), "%%%02X", byte);
        }
        encoded += code;
    }
    return encoded;
}

// Checks the "id" of a new element, or gives it the next one, if all elements have one.
void settleId(TreeMapObject& element, TreeMapObject& array) {
    std::set<int64_t> ids;
    int64_t id = 0;
    for (unsigned int i = 0; Node const neighbour{array.at(i)}; ++i) {
        if (!neighbour->get_ex("id", id)) {
            return;
        }
        ids.insert(id);
    }
    bool const isGiven = element.get_ex("id", id);
    require(isGiven ? !ids.contains(id) : ids.empty() || *ids.rbegin() < MAX_ID, 409,
            "this id is taken, or none is left");
    if (!ids.empty() && !isGiven) {
        element.set("id", *ids.rbegin() + 1);
    }
}

// Returns whether a member that does not exist yet can be added. (A new element has to be appended.)
bool canBeMade(Place const& place, TreeMapObject& document) {
    return !JsonData::lastStep(place.path).starts_with('[') &&
           document.presence(place.path.c_str()) == TreeMapObject::VACANT &&
           document.presence(JsonData::parentPath(place.path).c_str()) == TreeMapObject::PRESENT;
}

// Throws 412 if the request's conditions do not hold for the version. The session then reads the saved version: otherwise
// it would read its own old one for ever, and every request would be refused.
void requireVersion(Place const& place, std::uint64_t version, bool isThere) {
    Conditions const& conditions = place.conditions;
    EntityTag const tag = tagOf(version, true);
    EntityTag const existing = isThere ? tag : std::nullopt;
    // intended: the version is the database's, so If-Match can name it for a member that does not exist yet
    if (!conditions.isWanted(conditions.namesVersion() ? tag : existing) ||
        conditions.isKnown(existing)) {
        place.session.seeSaved(place.type);
        throw refuse(412, "there is another version of this: read it again");
    }
}

// Answers with the value at the place.
Reply show(Place const& place, TreeMapObject& document) {
    Node const copy(document.clone(place.path.c_str()));
    TreeMapObject null;
    TreeMapObject& value = copy != nullptr ? *copy : null;
    removeSecrets(place, value);
    return replyWith(value);
}

Reply merge(Place const& place, TreeMapObject& document, TreeMapObject& patch) {
    require(document.merge(place.path.c_str(), &patch) == 0, 400,
            "the value cannot be merged in here");
    return show(place, document);
}

Reply put(Place const& place, TreeMapObject& document, TreeMapObject& value) {
    if (messageOf("PUT", place.type, place.path) != nullptr) {
        return merge(place, document, value);
    }
    document.set(place.path.c_str(), &value);
    return show(place, document);
}

Reply append(Place const& place, TreeMapObject& document, TreeMapObject& element) {
    Node const array(document.get(place.path.c_str()));
    int const length = array != nullptr ? array->len() : -1;
    if (length < 0) {
        throw refuseMethod("GET, HEAD, PUT, PATCH, DELETE, OPTIONS");
    }
    int maximum = MAX_ARRAY_LENGTH;
    document.get_ex(join(JsonData::parentPath(place.path), "maxRules").c_str(), maximum);
    require(length < std::min(maximum, MAX_ARRAY_LENGTH), 409, "the array is full");
    settleId(element, *array);
    int const index = array->addArrayItem(&element);
    require(index >= 0, 400, "null cannot be appended");
    std::string const path = join(place.path, "[" + std::to_string(index) + "]");
    Reply reply = replyWith(element, 201);
    reply.headers.emplace_back(
        "Location", "/api/" + encode(LocalDbCtrl::getApiDir(place.type)) + "/" + encode(path));
    return reply;
}

Reply remove(Place const& place, TreeMapObject& document, TreeMapObject&) {
    document.remove(place.path.c_str());
    return Reply{.status = 204};
}

struct Method {
    char const* name;
    bool makes;  // a value that does not exist yet
    Reply (*change)(Place const& place, TreeMapObject& document, TreeMapObject& value);
};

Method const METHODS[] = {
    {"DELETE", false, remove},
    {"PATCH", true, merge},
    {"POST", false, append},
    {"PUT", true, put},
};

// Returns the value in the body. If the label tables have a message for the place, the body has to be that message.
Node valueFor(Place const& place, std::string const& method, std::string const& body) {
    Node value = parseBody(body);
    if (char const* const message = messageOf(method, place.type, place.path)) {
        requireRequest(place.type, message, *value);
    }
    require(!place.path.empty() || value->presence("any") != TreeMapObject::IMPOSSIBLE, 400,
            "only an object can be merged into a whole database");
    if (value->presence("users") == TreeMapObject::PRESENT) {
        requireWritable({place.type, join(place.path, "users"), place.session, {}});
    }
    return value;
}

}  // namespace

Reply changeResource(Place const& place, std::string const& method, std::string const& body) {
    auto const* const row = std::ranges::find(METHODS, method, &Method::name);
    requireWritable(place);
    if (place.path.empty() && method != "PATCH") {
        throw refuseMethod("GET, HEAD, PATCH, OPTIONS");
    }
    require(!hasIndex(place.path) || place.conditions.namesVersion(), 428,
            "an index needs If-Match: it means another element in another version");
    Node const value =
        method == "DELETE" ? std::make_unique<TreeMapObject>() : valueFor(place, method, body);
    Reply reply;
    auto const change = [&](LocalDbTransaction& database) {
        TreeMapObject& document = *database.object();
        bool const isThere = document.presence(place.path.c_str()) == TreeMapObject::PRESENT;
        require(isThere || (row->makes && canBeMade(place, document)), 404, "nothing at this path");
        requireVersion(place, database.version(), isThere);
        reply = row->change(place, document, *value);
        reply.status = reply.status == 200 && !isThere ? 201 : reply.status;
    };
    // only administrators get here
    reply.etag = tagOf(changeDatabase(place.type, place.session, change), true);
    return reply;
}

std::uint64_t changeDatabase(unsigned int type, Session const& session, Change const& change,
                             char const* unsaved) {
    LocalDbTransaction database(type, "", "default", MAX_WAIT_MS);
    requireReadable(database);
    change(database);
    if (database.save() != 0) {
        throw database ? refuseDocument(database.fault()) : refuse(500, unsaved);
    }
    session.seeSaved(type);
    return database.version();
}
