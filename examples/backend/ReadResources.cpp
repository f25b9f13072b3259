// Reads what is at a place: as a whole, or the objects in it that have a certain member.
#include <BEConfig.h>
#include <Logger.h>

#include <functional>

#include "Access.h"
#include "Json.h"
#include "Messages.h"
#include "Resources.h"
#include "View.h"

namespace {

// Answers with what `select` makes of a copy of the node at the place, unless the client has that already.
Reply reading(Place const& place, std::function<Reply(TreeMapObject&)> const& select) {
    View const view(place);
    if (std::optional<Reply> const refusal = view.refusal()) {
        return *refusal;
    }
    std::string const tag = tagOf(view.version(), place.session.isAdministrator());
    if (!place.conditions.isWanted(tag)) {
        return refuse(412, "there is another version of this");
    }
    Reply reply;
    if (place.conditions.isKnown(tag)) {
        reply.status = 304;
    } else if (Node const node = view.copy()) {
        reply = select(*node);
    } else {
        reply = refuse(503, "out of memory", 1);
    }
    reply.etag = reply.status < 400 ? tag : "";
    return reply;
}

// Whether a value is what the message that reads this place answers with, where that is to be checked.
bool isGoodResponse(Place const& place, Message const* message, json_object* value) {
    return message == nullptr || BEConfig::VALIDATION_ON_RESPONSE == 0 ||
           isValid(place.type, message->response, value);
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

}  // namespace

Reply readResource(Place const& place) {
    if (namesSecret(place)) {
        return refuse(403, "not shown to anyone");
    }
    return reading(place, [&](TreeMapObject& node) {
        Message const* const message = messageOf("GET", place.type, place.path);
        if (!isGoodResponse(place, message, node.jobj)) {
            Logger::print(LOG_TYPE_ERROR, LOG_GROUP_API_AL, "%s: not valid, not sent\n",
                          message->response);
            return refuse(500, std::string("the stored value is not a valid ") + message->response);
        }
        return show(place, 200, node.jobj);
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
        return show(place, 200, found.get());
    });
}
