#include "Resources.h"

#include <BEConfig.h>
#include <JsonData.h>
#include <LocalDbTransaction.h>
#include <Logger.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <set>

#include "Json.h"
#include "Limits.h"
#include "Messages.h"

namespace {

char const SHARED[] = "default";

typedef std::unique_ptr<TreeMapObject> Node;

// Who may see and do what.

char const* const SECRETS[] = {"password", "passphrase", "presharedKey", "pin", "wpsPin"};

bool isSecret(Place const& place, std::string const& name) {
    bool const isHash = name == "password" && place.type == API_GATEWAY;
    return isHash || (!place.session.isAdministrator() &&
                      std::find(std::begin(SECRETS), std::end(SECRETS), name) != std::end(SECRETS));
}

bool namesSecret(Place const& place) {
    auto const& tokens = place.path.tokens;
    return std::any_of(tokens.begin(), tokens.end(),
                       [&](std::string const& token) { return isSecret(place, token); });
}

void removeSecrets(Place const& place, json_object* value) {
    for (json_object* const element : elementsOf(value)) {
        removeSecrets(place, element);
    }
    for (auto const& [name, member] : membersOf(value)) {
        if (isSecret(place, name)) {
            json_object_object_del(value, name);
        } else {
            removeSecrets(place, member);
        }
    }
}

// Why a place cannot be written to, if it cannot.
std::optional<Reply> refuseWriting(Place const& place) {
    if (!place.session.isAdministrator()) {
        return refuse(403, "only an administrator may change this");
    }
    if (place.path.isRoot()) {
        return refuse(405, "cannot replace a whole database: give a path inside it");
    }
    if (place.type == API_GATEWAY && place.path.tokens.front() == "users") {
        return refuse(403, "users cannot be changed here");
    }
    return std::nullopt;
}

// Answers.

Reply refuseLock(LocalDbTransaction::Status status) {
    switch (status) {
        case LocalDbTransaction::BUSY: return refuse(503, "the database is busy", 1);
        case LocalDbTransaction::NO_MEMORY: return refuse(503, "out of memory", 1);
        case LocalDbTransaction::NO_FILE: return refuse(404, "no such database");
        case LocalDbTransaction::NO_NODE: return refuse(404, "nothing at this path");
        default: return refuse(500, "the database cannot be read");
    }
}

// With the schema, so that the client sees what would be valid.
Reply refuseMessage(Place const& place, char const* label) {
    if (!hasUsableFiles(place.type, label)) {
        return refuse(500, std::string("the files of ") + label + " cannot be used");
    }
    Logger::print(LOG_TYPE_WARN, LOG_GROUP_API_AL, "%s: not valid, refused\n", label);
    Json const reason(json_object_new_object());
    std::string const text = std::string("the result would not be a valid ") + label;
    json_object_object_add(reason.get(), "error", json_object_new_string(text.c_str()));
    json_object_object_add(reason.get(), "schema", schemaOf(place.type, label).release());
    Reply reply;
    reply.status = 400;
    reply.body = textOf(reason.get());
    return reply;
}

// The value as this client may see it; checked, where it is the response of a message.
Reply answer(Place const& place, int status, json_object* value, Message const* message) {
    if (message != nullptr && BEConfig::VALIDATION_ON_RESPONSE != 0 &&
        hasSchema(place.type, message->response) &&
        !isValid(place.type, message->response, value)) {
        Logger::print(LOG_TYPE_ERROR, LOG_GROUP_API_AL, "%s: not valid, not sent\n",
                      message->response);
        return refuse(500, std::string("the stored value is not a valid ") + message->response);
    }
    Json const visible = copyOf(value);
    if (!visible) {
        return refuse(503, "out of memory", 1);
    }
    removeSecrets(place, visible.get());
    Reply reply;
    reply.status = status;
    reply.body = textOf(visible.get());
    return reply;
}

// Runs `use` on the node at the place, as the session sees it.
Reply reading(Place const& place, std::function<Reply(TreeMapObject&)> const& use) {
    LocalDbTransaction database(place.type, place.path.text().c_str(),
                                place.session.databaseKey.c_str(), MAX_WAIT_MS);
    if (!database) {
        return refuseLock(database.status());
    }
    Reply reply = use(*database.object());
    database.keep();  // nothing is changed: it need not be read again
    return reply;
}

// Gives the session's controller a copy of the shared document. False when there is no memory.
bool renew(LocalDbTransaction& own, LocalDbTransaction& database) {
    json_object* copy = nullptr;
    if (json_object_deep_copy(database->jobj, &copy, nullptr) != 0) {
        return false;
    }
    json_object_put(own->jobj);
    own->jobj = copy;
    return true;
}

// Whether the first array that the path has an index into is the same for the session and for all.
bool seesTheSame(Place const& place, TreeMapObject& own, TreeMapObject& shared) {
    Path array;
    for (std::string const& token : place.path.tokens) {
        if (Path::isIndex(token)) {
            std::string const path = array.text();
            return json_object_equal(JsonData::getJObj(own.jobj, path.c_str()),
                                     JsonData::getJObj(shared.jobj, path.c_str())) != 0;
        }
        array.tokens.push_back(token);
    }
    return true;
}

// An index is no name: what the session sees at it must be what would be changed. If it is not, the
// session sees from now on what all see.
std::optional<Reply> refuseStale(Place const& place, LocalDbTransaction& database) {
    if (!place.session.hasDatabase()) {
        return std::nullopt;
    }
    LocalDbTransaction own(place.type, "", place.session.databaseKey.c_str(), MAX_WAIT_MS);
    if (!own) {
        return refuseLock(own.status());
    }
    if (seesTheSame(place, *own.object(), *database.object())) {
        own.keep();
        return std::nullopt;
    }
    if (renew(own, database)) {
        own.keep();
    }
    return refuse(409, "this has been changed in another session: read it again");
}

// Saves the shared document, and brings it to the controller of the session.
Reply save(Place const& place, LocalDbTransaction& database, Reply success) {
    Reply failure = refuse(500, "the change could not be saved; nothing is changed");
    if (!place.session.hasDatabase()) {
        return database.save() == 0 ? success : failure;
    }
    LocalDbTransaction own(place.type, "", place.session.databaseKey.c_str(), MAX_WAIT_MS);
    if (!own || !renew(own, database)) {
        return own ? refuse(503, "out of memory", 1) : refuseLock(own.status());
    }
    if (database.save() != 0) {
        return failure;
    }
    own.keep();
    return success;
}

// Runs `change` on the shared document. It answers with a refusal, or with what is to be answered
// once the change is saved; a change that would break a message is refused, too.
Reply writing(Place const& place,
              std::function<Reply(TreeMapObject&, Path& changed)> const& change) {
    if (std::optional<Reply> const refusal = refuseWriting(place)) {
        return *refusal;
    }
    LocalDbTransaction database(place.type, "", SHARED, MAX_WAIT_MS);
    if (!database) {
        return refuseLock(database.status());
    }
    if (std::optional<Reply> const refusal = refuseStale(place, database)) {
        return *refusal;
    }
    Path changed = place.path;
    Reply reply = change(*database.object(), changed);
    if (reply.status >= 300) {
        return reply;
    }
    if (char const* const label = brokenMessage(place.type, *database.object(), changed)) {
        return refuseMessage(place, label);
    }
    return save(place, database, reply);
}

// Kinds of values.

bool isSameKind(json_object* one, json_object* other) {
    json_type const type = json_object_get_type(one);
    return json_object_is_type(other, type) ||
           (type == json_type_double && json_object_is_type(other, json_type_int));
}

Reply refuseKind(json_object* existing) {
    return refuse(400, std::string("the existing value is of type ") +
                           json_type_to_name(json_object_get_type(existing)));
}

bool canHold(TreeMapObject const& container, std::string const& token) {
    return !Path::isIndex(token) && json_object_is_type(container.jobj, json_type_object);
}

// The "id" of each element; none when one has none.
std::set<int> idsIn(TreeMapObject& array) {
    std::set<int> ids;
    for (json_object* const value : elementsOf(array.jobj)) {
        TreeMapObject element(json_object_get(value));
        int id = 0;
        if (!element.get_ex("id", id)) {
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

// Appends the objects that have such a member, with one of the wanted values, in document order. The
// library's own search logs a line for each plain value in an array: too much at anybody's request.
void findObjects(json_object* value, char const* key, Json const (&wanted)[2], json_object* found) {
    json_object* const member = json_object_object_get(value, key);
    if (member != nullptr && (json_object_equal(member, wanted[0].get()) ||
                              json_object_equal(member, wanted[1].get()))) {
        json_object_array_add(found, json_object_get(value));
    }
    for (json_object* const element : elementsOf(value)) {
        findObjects(element, key, wanted, found);
    }
    for (auto const& [name, child] : membersOf(value)) {
        findObjects(child, key, wanted, found);
    }
}

bool isFull(TreeMapObject& document, Path const& array, int length) {
    Node const parent(document.get(array.parent().text().c_str()));
    int maximum = MAX_ARRAY_LENGTH;
    return length >= MAX_ARRAY_LENGTH ||
           (parent != nullptr && parent->get_ex("maxRules", maximum) && length >= maximum);
}

}  // namespace

Reply readResource(Place const& place) {
    if (namesSecret(place)) {
        return refuse(403, "not shown to anyone");
    }
    return reading(place, [&](TreeMapObject& node) {
        return answer(place, 200, node.jobj, messageOf("GET", place.type, place.path));
    });
}

Reply findResources(Place const& place, std::string const& key, std::string const& value) {
    if (namesSecret(place) || isSecret(place, key)) {
        return refuse(403, "not shown to anyone");
    }
    return reading(place, [&](TreeMapObject& node) {
        // a number or a Boolean as well
        Json const wanted[] = {Json(json_object_new_string(value.c_str())), parseJson(value)};
        Json const found(json_object_new_array());
        findObjects(node.jobj, key.c_str(), wanted, found.get());
        return answer(place, 200, found.get(), nullptr);
    });
}

Reply changeResource(Place const& place, std::string const& body) {
    Json const value = parseJson(body);
    if (!value) {
        return refuse(400, "the body is not one JSON value");
    }
    Message const* const message = messageOf("PUT", place.type, place.path);
    bool const isMessage = message != nullptr && json_object_is_type(value.get(), json_type_object);
    if (isMessage && !isValid(place.type, message->request, value.get())) {
        return refuseMessage(place, message->request);
    }
    return writing(place, [&](TreeMapObject& document, Path&) {
        std::string const path = place.path.text();
        Node const existing(document.get(path.c_str()));
        Node const container(document.get(place.path.parent().text().c_str()));
        if (existing == nullptr &&
            (container == nullptr || !canHold(*container, place.path.last()))) {
            return refuse(404, "nothing at this path, and nothing that could hold it");
        }
        bool const isObject =
            existing != nullptr && json_object_is_type(existing->jobj, json_type_object);
        // a message replaces a value that is not an object: that value is damaged
        if (existing != nullptr && !isMessage && !isSameKind(existing->jobj, value.get())) {
            return refuseKind(existing->jobj);
        }
        if (isObject && isMessage) {
            merge(existing->jobj, value.get());
        } else if (JsonData::setJObj(document.jobj, path.c_str(), value.get()) != 0) {
            return refuse(500, "the value cannot be stored");
        }
        return answer(place, existing != nullptr ? 200 : 201,
                      JsonData::getJObj(document.jobj, path.c_str()), nullptr);
    });
}

Reply appendResource(Place const& place, std::string const& body) {
    Json const value = parseJson(body);
    if (!value) {
        return refuse(400, "the body is not one JSON value");
    }
    Message const* const message = messageOf("POST", place.type, place.path);
    if (message != nullptr && !isValid(place.type, message->request, value.get())) {
        return refuseMessage(place, message->request);
    }
    return writing(place, [&](TreeMapObject& document, Path& changed) {
        Node const array(document.get(place.path.text().c_str()));
        int const length = array != nullptr ? array->len() : 0;
        if (array == nullptr || length < 0) {
            return refuse(array == nullptr ? 404 : 405, "no array at this path");
        }
        if (isFull(document, place.path, length)) {
            return refuse(409, "the array is full");
        }
        Node const first(array->at(0));
        if (first != nullptr && !isSameKind(first->jobj, value.get())) {
            return refuseKind(first->jobj);
        }
        TreeMapObject element(json_object_get(value.get()));
        if (!settleId(element, idsIn(*array))) {
            return refuse(409, "this id is taken, or none is left");
        }
        int const index = array->addArrayItem(&element);
        if (index < 0) {
            return refuse(500, "the value cannot be stored");
        }
        changed.tokens.push_back("[" + std::to_string(index) + "]");
        Reply reply = answer(place, 201, element.jobj, nullptr);
        reply.location =
            std::string("/api/") + LocalDbCtrl::getApiDir(place.type) + "/" + changed.text();
        return reply;
    });
}

Reply removeResource(Place const& place) {
    return writing(place, [&](TreeMapObject& document, Path&) {
        std::string const path = place.path.text();
        Node const existing(document.get(path.c_str()));
        Node const container(document.get(place.path.parent().text().c_str()));
        if (existing == nullptr || container == nullptr) {
            return refuse(404, "nothing at this path");
        }
        // removal replaces the array in its handle: for the root that must be the document's own
        TreeMapObject& array = place.path.parent().isRoot() ? document : *container;
        if (!Path::isIndex(place.path.last())) {
            document.del(path.c_str());
        } else if (array.delArrayItem(place.path.lastIndex()) < 0) {
            return refuse(409, "cannot remove an element of a nested array");
        }
        Reply reply;
        reply.status = 204;
        return reply;
    });
}
