// Reads what is at a place: as a whole, or the objects in it that have a certain member. And everything.
#include <BEConfig.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <Logger.h>

#include <functional>

#include "Access.h"
#include "Messages.h"
#include "Resources.h"
#include "View.h"

namespace {

// What is there for the session to see, if anything; the refusal otherwise.
Node visibleAt(Place const& place, View const& view, Reply& refusal) {
    Node node;
    if (std::optional<Reply> const none = view.refusal()) {
        refusal = *none;
    } else if ((node = view.copy()) == nullptr) {
        refusal = refuse(503, "out of memory", 1);
    } else {
        removeSecrets(place, *node);
    }
    return node;
}

std::string tagFor(Place const& place, View const& view) {
    return tagOf(view.version(), place.session.isAdministrator());
}

// Answers with what `select` makes of a copy of the node at the place, unless the client has that already.
Reply reading(Place const& place, std::function<Reply(TreeMapObject&)> const& select) {
    View const view(place);
    if (std::optional<Reply> const refusal = view.refusal()) {
        return *refusal;
    }
    std::string const tag = tagFor(place, view);
    if (!place.conditions.isWanted(tag)) {
        return refuse(412, "there is another version of this");
    }
    Reply reply;
    if (place.conditions.isKnown(tag)) {
        reply.status = 304;
    } else if (Node const node = visibleAt(place, view, reply)) {
        reply = select(*node);
    }
    reply.etag = reply.status < 400 ? tag : "";
    return reply;
}

// Whether a value is what the message that reads this place answers with, where that is to be checked.
bool isGoodResponse(Place const& place, Message const* message, TreeMapObject& value) {
    return message == nullptr || BEConfig::VALIDATION_ON_RESPONSE == 0 ||
           isValid(place.type, message->response, value);
}

// {"etag": ..., "value": ..., "schema": ...}, without the last if there is none; or {"error": ...}
Node entryOf(Place const& place) {
    View const view(place);
    Reply refusal;
    Node const value = visibleAt(place, view, refusal);
    if (value == nullptr) {
        return Node(JsonData::createObject(refusal.body.c_str()));
    }
    auto entry = std::make_unique<TreeMapObject>(false);
    Node const schema(JsonData::createObjectFromFile(schemaFileOf(place.type).c_str()));
    entry->set("etag", tagFor(place, view).c_str());
    entry->set("value", value.get());
    entry->set("schema", schema.get());
    return entry;
}

}  // namespace

Reply readResource(Place const& place) {
    if (namesSecret(place)) {
        return refuse(403, "not shown to anyone");
    }
    return reading(place, [&](TreeMapObject& node) {
        Message const* const message = messageOf("GET", place.type, place.path);
        if (!isGoodResponse(place, message, node)) {
            Logger::print(LOG_TYPE_ERROR, LOG_GROUP_API_AL, "%s: not valid, not sent\n",
                          message->response);
            return refuse(500, std::string("the stored value is not a valid ") + message->response);
        }
        return replyWith(node);
    });
}

Reply findResources(Place const& place, std::string const& key, std::string const& value) {
    if (namesSecret(place) || isSecret(place, key)) {
        return refuse(403, "not shown to anyone");
    }
    return reading(place, [&](TreeMapObject& node) {
        Node const paths(node.findPaths(key.c_str(), value.c_str()));
        TreeMapObject found(true);
        for (int i = 0; paths != nullptr && i < paths->len(); ++i) {
            std::string const path =
                paths->get<char const*>(("[" + std::to_string(i) + "]").c_str());
            Node const object(node.get(JsonData::parentPath(path).c_str()));
            found.addArrayItem(object.get());
        }
        return paths != nullptr ? replyWith(found) : refuse(503, "out of memory", 1);
    });
}

Reply readEverything(Session const& session) {
    TreeMapObject all(false);
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        if (char const* const folder = LocalDbCtrl::getApiDir(type)) {
            Node const entry = entryOf({type, "", session, {}});
            all.set(folder, entry.get());
        }
    }
    return replyWith(all);
}
