// Changes what is at a place: puts a value there, appends one, removes one.
#include <JsonData.h>
#include <LocalDbTransaction.h>

#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <set>

#include "Access.h"
#include "Json.h"
#include "Limits.h"
#include "Messages.h"
#include "Resources.h"
#include "View.h"

namespace {

char const SHARED[] = "default";

bool canHold(TreeMapObject const& container, std::string const& token) {
    return !Path::isIndex(token) && json_object_is_type(container.jobj, json_type_object);
}

// The "id" of each element; none when one has none.
std::set<int> idsIn(TreeMapObject& array) {
    std::set<int> ids;
    for (unsigned int i = 0; Node const element{array.at(i)}; ++i) {
        int id = 0;
        if (!element->get_ex("id", id)) {
            return {};
        }
        ids.insert(id);
    }
    return ids;
}

// Gives a new element an id like those of the others, if they have any. False when its own is taken,
// or there is none left.
bool settleId(TreeMapObject& element, std::set<int> const& ids) {
    int id = 0;
    if (ids.empty()) {
        return true;
    }
    if (element.get_ex("id", id)) {
        return !ids.contains(id);
    }
    if (*ids.rbegin() == std::numeric_limits<int>::max()) {
        return false;
    }
    element.set("id", *ids.rbegin() + 1);
    return true;
}

// What a request does where there is nothing at its place.
enum Missing { IS_REFUSED, IS_MADE };

// Why there is nothing to change, if so.
std::optional<Reply> refuseMissing(Place const& place, TreeMapObject& document, Missing missing) {
    if (missing == IS_REFUSED) {
        return refuse(404, "nothing at this path");
    }
    Node const container(document.get(place.path.parent().text().c_str()));
    if (container == nullptr || !canHold(*container, place.path.last())) {
        return refuse(404, "nothing at this path, and nothing that could hold it");
    }
    return std::nullopt;
}

// Why this version of the database must not be changed, if so. The session sees it from now on: a request
// that is refused because the session knows another one would be refused for ever.
std::optional<Reply> refuseVersion(Place const& place, std::uint64_t version, bool isThere) {
    Conditions const& conditions = place.conditions;
    EntityTag const tag = isThere ? EntityTag(tagOf(version, true)) : std::nullopt;
    if (!conditions.isWanted(tag) || conditions.isKnown(tag)) {
        place.session.seeSaved(place.type);
        return refuse(412, "there is another version of this: read it again");
    }
    if (conditions.namesVersion() || !place.path.hasIndex() || !seesOther(place, version)) {
        return std::nullopt;
    }
    place.session.seeSaved(place.type);
    return refuse(409, "this has been changed in another session: read it again");
}

// Changes the document at a place that may be changed. Answers with a refusal, or with what is to be
// answered once the change is saved. `existing` is null when there is nothing at the place.
typedef std::function<Reply(TreeMapObject& document, TreeMapObject* existing)> Change;

Reply apply(Place const& place, LocalDbTransaction& database, Missing missing,
            Change const& change) {
    TreeMapObject& document = *database.object();
    Node const existing(document.get(place.path.text().c_str()));
    std::optional<Reply> refusal;
    if (existing == nullptr) {
        refusal = refuseMissing(place, document, missing);
    }
    if (!refusal) {
        refusal = refuseVersion(place, database.version(), existing != nullptr);
    }
    return refusal ? *refusal : change(document, existing.get());
}

// Changes the shared document and saves it.
Reply writing(Place const& place, Missing missing, Change const& change) {
    if (std::optional<Reply> const refusal = refuseWriting(place)) {
        return *refusal;
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

bool isFull(TreeMapObject& document, Path const& array, int length) {
    Node const parent(document.get(array.parent().text().c_str()));
    int maximum = MAX_ARRAY_LENGTH;
    return length >= MAX_ARRAY_LENGTH ||
           (parent != nullptr && parent->get_ex("maxRules", maximum) && length >= maximum);
}

}  // namespace

Reply changeResource(Place const& place, std::string const& body) {
    Json const value = parseJson(body);
    if (!value) {
        return refuse(400, "the body is not one JSON value");
    }
    Message const* const message = messageOf("PUT", place.type, place.path);
    if (message != nullptr) {
        if (auto const refusal = refuseMessage(place.type, message->request, value.get())) {
            return *refusal;
        }
    }
    return writing(place, IS_MADE, [&](TreeMapObject& document, TreeMapObject* existing) {
        std::string const path = place.path.text();
        bool const isMerged = message != nullptr && existing != nullptr &&
                              json_object_is_type(existing->jobj, json_type_object) &&
                              json_object_is_type(value.get(), json_type_object);
        if (isMerged) {
            merge(existing->jobj, value.get());
        } else if (JsonData::setJObj(document.jobj, path.c_str(), value.get()) != 0) {
            return refuse(500, "the value cannot be stored");
        }
        Json const stored = copyOf(JsonData::getJObj(document.jobj, path.c_str()));
        return show(place, existing != nullptr ? 200 : 201, stored.get());
    });
}

Reply appendResource(Place const& place, std::string const& body) {
    Json const value = parseJson(body);
    if (!value) {
        return refuse(400, "the body is not one JSON value");
    }
    Message const* const message = messageOf("POST", place.type, place.path);
    if (message != nullptr) {
        if (auto const refusal = refuseMessage(place.type, message->request, value.get())) {
            return *refusal;
        }
    }
    return writing(place, IS_REFUSED, [&](TreeMapObject& document, TreeMapObject* array) {
        int const length = array->len();
        if (length < 0) {
            return refuseMethod("GET, HEAD, PUT, DELETE, OPTIONS", "no array at this path");
        }
        if (isFull(document, place.path, length)) {
            return refuse(409, "the array is full");
        }
        TreeMapObject element(json_object_get(value.get()));
        if (!settleId(element, idsIn(*array))) {
            return refuse(409, "this id is taken, or none is left");
        }
        int const index = array->addArrayItem(&element);
        if (index < 0) {
            return refuse(500, "the value cannot be stored");
        }
        Reply reply = show(place, 201, copyOf(element.jobj).get());
        reply.location = std::string("/api/") + LocalDbCtrl::getApiDir(place.type) + "/" +
                         place.path.text() + ".[" + std::to_string(index) + "]";
        return reply;
    });
}

Reply removeResource(Place const& place) {
    return writing(place, IS_REFUSED, [&](TreeMapObject& document, TreeMapObject*) {
        Path const parent = place.path.parent();
        Node const container(document.get(parent.text().c_str()));
        // removal replaces the array in its handle: for the root that must be the document's own
        TreeMapObject& array = parent.isRoot() ? document : *container;
        if (!Path::isIndex(place.path.last())) {
            document.del(place.path.text().c_str());
        } else if (array.delArrayItem(place.path.lastIndex()) < 0) {
            return refuse(409, "cannot remove an element of a nested array");
        }
        Reply reply;
        reply.status = 204;
        return reply;
    });
}
