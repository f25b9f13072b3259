// Decides who may see and change what.
#include "Access.h"

#include <JsonData.h>
#include <LocalDbCtrl.h>

#include <algorithm>
#include <iterator>

namespace {

char const* const SECRETS[] = {"password", "passphrase", "presharedKey", "pin", "wpsPin"};

}  // namespace

bool isSecret(Place const& place, std::string const& name) {
    bool const isHash = name == "password" && place.type == API_GATEWAY;
    return isHash || (!place.session.isAdministrator() &&
                      std::find(std::begin(SECRETS), std::end(SECRETS), name) != std::end(SECRETS));
}

bool namesSecret(Place const& place) {
    std::string rest = place.path;
    while (!rest.empty() && !isSecret(place, JsonData::lastStep(rest))) {
        rest = JsonData::parentPath(rest);
    }
    return !rest.empty();
}

void removeSecrets(Place const& place, TreeMapObject& copy) {
    for (char const* const name : SECRETS) {
        if (isSecret(place, name)) {
            copy.removeAll(name);
        }
    }
}

std::optional<Reply> refuseWriting(Place const& place) {
    if (!place.session.isAdministrator()) {
        return refuse(403, "only an administrator may change this");
    }
    if (place.type == API_GATEWAY && (place.path + ".").starts_with("users.")) {
        return refuse(403, "users cannot be changed here");
    }
    return std::nullopt;
}
