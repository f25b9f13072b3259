// Changes what is at a place: puts a value there, merges one into it, appends one, removes one.
#include <JsonData.h>
#include <LocalDbTransaction.h>

#include <functional>
#include <optional>
#include <set>

#include "Access.h"
#include "Limits.h"
#include "Messages.h"
#include "Resources.h"
#include "View.h"

namespace {

char const SHARED[] = "default";
int64_t const MAX_ID = (INT64_C(1) << 53) - 1;  // a page holds no larger number exactly

bool isIndex(std::string const& step) { return step.starts_with('['); }
bool hasIndex(std::string const& path) { return ("." + path).find(".[") != std::string::npos; }

std::string join(std::string const& path, std::string const& step) {
    return path.empty() ? step : path + "." + step;
}

std::string indexed(std::string const& path, int index) {
    return join(path, "[" + std::to_string(index) + "]");
}

// The "id" of each element; none when one has none.
std::set<int64_t> idsIn(TreeMapObject& array) {
    std::set<int64_t> ids;
    for (unsigned int i = 0; Node const element{array.at(i)}; ++i) {
        int64_t id = 0;
        if (!element->get_ex("id", id)) {
            return {};
        }
        ids.insert(id);
    }
    return ids;
}

// Gives a new element an id like those of the others, if they have any. False when its own is taken,
// or there is none left.
bool settleId(TreeMapObject& element, std::set<int64_t> const& ids) {
    int64_t id = 0;
    if (ids.empty()) {
        return true;
    }
    if (element.get_ex("id", id)) {
        return !ids.contains(id);
    }
    if (*ids.rbegin() >= MAX_ID) {
        return false;
    }
    element.set("id", *ids.rbegin() + 1);
    return true;
}

// What a request does where there is nothing at its place.
enum Missing { IS_REFUSED, IS_MADE };

// Why there is nothing to change, if so. A new element has to be appended.
std::optional<Reply> refuseMissing(Place const& place, TreeMapObject& document, Missing missing) {
    bool const canBeMade =
        missing == IS_MADE && !isIndex(JsonData::lastStep(place.path)) &&
        document.presence(place.path.c_str()) == TreeMapObject::VACANT &&
        document.presence(JsonData::parentPath(place.path).c_str()) == TreeMapObject::PRESENT;
    return canBeMade ? std::nullopt : std::optional(refuse(404, "nothing at this path"));
}

// Why this version of the database must not be changed, if so. The session sees it from now on: a request
// that is refused because the session knows another one would be refused for ever.
std::optional<Reply> refuseVersion(Place const& place, std::uint64_t version, bool isThere) {
    Conditions const& conditions = place.conditions;
    EntityTag const tag = tagOf(version, true);
    EntityTag const existing = isThere ? tag : std::nullopt;
    // intended: a version is that of the database, so it can be named for what is made in it
    if (conditions.isWanted(conditions.namesVersion() ? tag : existing) &&
        !conditions.isKnown(existing)) {
        return std::nullopt;
    }
    place.session.seeSaved(place.type);
    return refuse(412, "there is another version of this: read it again");
}

// Changes the document at a place that may be changed. Answers with a refusal, or with what is to be
// answered once the change is saved.
typedef std::function<Reply(TreeMapObject& document)> Change;

Reply apply(Place const& place, LocalDbTransaction& database, Missing missing,
            Change const& change) {
    TreeMapObject& document = *database.object();
    bool const isThere = document.presence(place.path.c_str()) == TreeMapObject::PRESENT;
    std::optional<Reply> refusal;
    if (!isThere) {
        refusal = refuseMissing(place, document, missing);
    }
    if (!refusal) {
        refusal = refuseVersion(place, database.version(), isThere);
    }
    if (refusal) {
        return *refusal;
    }
    Reply reply = change(document);
    reply.status = reply.status == 200 && !isThere ? 201 : reply.status;
    return reply;
}

// Changes the shared document and saves it.
Reply writing(Place const& place, Missing missing, Change const& change) {
    if (hasIndex(place.path) && !place.conditions.namesVersion()) {
        return refuse(428, "an index needs If-Match: it means another element in another version");
    }
    LocalDbTransaction database(place.type, "", SHARED, MAX_WAIT_MS);
    if (!database) {
        return refuseDatabase(database.status());
    }
    Reply reply = apply(place, database, missing, change);
    if (reply.status >= 300) {
        return reply;
    }
    if (database.save() != 0) {
        return database.status() == LocalDbTransaction::INVALID
                   ? refuseDocument(place.type, database.fault())
                   : refuse(500, "the change could not be saved; nothing is changed");
    }
    place.session.seeSaved(place.type);
    reply.etag = tagOf(database.version(), true);  // only administrators get here
    return reply;
}

// A whole database is only changed in parts.
std::optional<Reply> refuseWhole(Place const& place) {
    return place.path.empty() ? std::optional(refuseMethod("GET, HEAD, PATCH, OPTIONS",
                                                           "cannot replace a whole database: give "
                                                           "a path inside it, or use PATCH"))
                              : std::nullopt;
}

// Why a patch must not be merged into a whole database, if so.
std::optional<Reply> refusePatch(Place const& place, TreeMapObject& patch) {
    if (!place.path.empty()) {
        return std::nullopt;
    }
    if (!isObject(patch)) {
        return refuse(400, "only an object can be merged into a whole database");
    }
    return place.type == API_GATEWAY && patch.presence("users") == TreeMapObject::PRESENT
               ? std::optional(refuse(403, "users cannot be changed here"))
               : std::nullopt;
}

// The body of a change; null when there is a refusal. It is the message that does this at the place, if
// there is one.
Node bodyFor(Place const& place, char const* method, std::string const& body, Reply& refusal) {
    if (auto const forbidden = refuseWriting(place)) {
        refusal = *forbidden;
        return nullptr;
    }
    Node value = parseBody(body, refusal);
    Message const* const message = messageOf(method, place.type, place.path);
    if (value != nullptr && message != nullptr) {
        if (auto const invalid = refuseMessage(place.type, message->request, *value)) {
            refusal = *invalid;
            return nullptr;
        }
    }
    return value;
}

// What is at the place now.
Reply show(Place const& place, TreeMapObject& document) {
    Node const copy(document.clone(place.path.c_str()));
    if (copy == nullptr) {
        TreeMapObject null;
        return replyWith(null);
    }
    removeSecrets(place, *copy);
    return replyWith(*copy);
}

Reply merge(Place const& place, TreeMapObject& document, TreeMapObject& patch) {
    return document.merge(place.path.c_str(), &patch) == 0
               ? show(place, document)
               : refuse(400, "the value cannot be merged in here");
}

bool isFull(TreeMapObject& document, std::string const& array, int length) {
    int maximum = MAX_ARRAY_LENGTH;
    document.get_ex(join(JsonData::parentPath(array), "maxRules").c_str(), maximum);
    return length >= std::min(maximum, MAX_ARRAY_LENGTH);
}

Reply append(Place const& place, TreeMapObject& document, TreeMapObject& element) {
    Node const array(document.get(place.path.c_str()));
    int const length = array != nullptr ? array->len() : -1;
    if (length < 0) {
        return refuseMethod("GET, HEAD, PUT, PATCH, DELETE, OPTIONS", "no array at this path");
    }
    if (isFull(document, place.path, length)) {
        return refuse(409, "the array is full");
    }
    if (!settleId(element, idsIn(*array))) {
        return refuse(409, "this id is taken, or none is left");
    }
    int const index = array->addArrayItem(&element);
    if (index < 0) {
        return refuse(400, "null cannot be appended");
    }
    Reply reply = replyWith(element, 201);
    reply.location = std::string("/api/") + LocalDbCtrl::getApiDir(place.type) + "/" +
                     indexed(place.path, index);
    return reply;
}

}  // namespace

Reply changeResource(Place const& place, std::string const& body) {
    if (auto const refusal = refuseWhole(place)) {
        return *refusal;
    }
    Reply refusal;
    Node const value = bodyFor(place, "PUT", body, refusal);
    if (value == nullptr) {
        return refusal;
    }
    bool const isMessage = messageOf("PUT", place.type, place.path) != nullptr;
    return writing(place, IS_MADE, [&](TreeMapObject& document) {
        if (isMessage) {
            return merge(place, document, *value);
        }
        document.set(place.path.c_str(), value.get());
        return show(place, document);
    });
}

Reply mergeResource(Place const& place, std::string const& body) {
    Reply refusal;
    Node const patch = bodyFor(place, "PATCH", body, refusal);
    if (patch == nullptr) {
        return refusal;
    }
    if (auto const forbidden = refusePatch(place, *patch)) {
        return *forbidden;
    }
    return writing(place, IS_MADE,
                   [&](TreeMapObject& document) { return merge(place, document, *patch); });
}

Reply appendResource(Place const& place, std::string const& body) {
    Reply refusal;
    Node const element = bodyFor(place, "POST", body, refusal);
    return element == nullptr ? refusal : writing(place, IS_REFUSED, [&](TreeMapObject& document) {
        return append(place, document, *element);
    });
}

Reply removeResource(Place const& place) {
    if (auto const refusal = refuseWriting(place)) {
        return *refusal;
    }
    if (auto const refusal = refuseWhole(place)) {
        return *refusal;
    }
    return writing(place, IS_REFUSED, [&](TreeMapObject& document) {
        document.remove(place.path.c_str());
        return Reply{.status = 204};
    });
}
