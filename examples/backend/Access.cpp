#include "Access.h"

#include <LocalDbCtrl.h>

#include <algorithm>
#include <iterator>

#include "Json.h"

namespace {

char const* const SECRETS[] = {"password", "passphrase", "presharedKey", "pin", "wpsPin"};

// Whether nothing in the database is a secret to the session.
bool seesAll(Place const& place) {
    return place.session.isAdministrator() && place.type != API_GATEWAY;
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

}  // namespace

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

Reply show(Place const& place, int status, json_object* copy) {
    if (copy == nullptr) {
        return refuse(503, "out of memory", 1);
    }
    if (!seesAll(place)) {
        removeSecrets(place, copy);
    }
    Reply reply;
    reply.status = status;
    reply.body = textOf(copy);
    return reply;
}

std::optional<Reply> refuseWriting(Place const& place) {
    if (!place.session.isAdministrator()) {
        return refuse(403, "only an administrator may change this");
    }
    if (place.path.isRoot()) {
        return refuseMethod("GET, HEAD, OPTIONS",
                            "cannot replace a whole database: give a path inside it");
    }
    if (place.type == API_GATEWAY && place.path.tokens.front() == "users") {
        return refuse(403, "users cannot be changed here");
    }
    return std::nullopt;
}
