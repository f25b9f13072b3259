// Decides who may see and change what.
#include "Access.h"

#include <JsonData.h>
#include <LocalDbCtrl.h>

#include <algorithm>
#include <iterator>

#include "tools/SecretNames.h"

bool isSecret(Place const& place, std::string const& name) {
    bool const isHash = name == "password" && place.type == API_GATEWAY;
    return isHash || (!place.session.isAdministrator() &&
                      std::find(std::begin(SECRET_NAMES), std::end(SECRET_NAMES), name) !=
                          std::end(SECRET_NAMES));
}

void removeSecrets(Place const& place, TreeMapObject& copy) {
    for (char const* const name : SECRET_NAMES) {
        if (isSecret(place, name)) {
            copy.removeAll(name);
        }
    }
}

void requireVisible(Place const& place) {
    for (std::string rest = place.path; !rest.empty(); rest = JsonData::parentPath(rest)) {
        require(!isSecret(place, JsonData::lastStep(rest)), 403, "not shown to anyone");
    }
}

void requireWritable(Place const& place) {
    require(place.session.isAdministrator(), 403, "only an administrator may change this");
    require(place.type != API_GATEWAY || !(place.path + ".").starts_with("users."), 403,
            "users cannot be changed here");
}
