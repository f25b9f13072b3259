// Compares entity tags, and decides who may see and change what.
#include "Place.h"

#include <JsonData.h>
#include <LocalDbCtrl.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "tools/SecretNames.h"

namespace {

enum Comparison { STRONG, WEAK };

// Returns whether a list of tags contains this one. The list ends at the first thing that is not a tag.
bool contains(std::string_view list, std::string_view tag, Comparison comparison) {
    for (;;) {
        list.remove_prefix(std::min(list.find_first_not_of(", \t"), list.size()));
        bool const isWeak = list.substr(0, 2) == "W/";
        list.remove_prefix(isWeak ? 2 : 0);
        size_t const end = list.find('"', 1);
        if (list.empty() || list.front() != '"' || end == std::string_view::npos) {
            return false;
        }
        if (list.substr(0, end + 1) == tag && (!isWeak || comparison == WEAK)) {
            return true;
        }
        list.remove_prefix(end + 1);
    }
}

bool names(std::string const& condition, EntityTag const& tag, Comparison comparison) {
    return tag.has_value() && (condition == "*" || contains(condition, *tag, comparison));
}

}  // namespace

std::string tagOf(std::uint64_t version, bool seesAll) {
    char tag[32] = "";
    if (version != 0) {
        std::snprintf(tag, sizeof(tag), "\"%016" PRIx64 "-%s\"", version, seesAll ? "all" : "part");
    }
    return tag;
}

bool Conditions::isWanted(EntityTag const& tag) const {
    return ifMatch.empty() || names(ifMatch, tag, STRONG);
}

bool Conditions::isKnown(EntityTag const& tag) const { return names(ifNoneMatch, tag, WEAK); }

bool isSecret(Place const& place, std::string const& name) {
    bool const isHash = name == "password" && place.type == API_GATEWAY;
    return isHash || (!place.session.isAdministrator() &&
                      std::ranges::find(SECRET_NAMES, name) != std::end(SECRET_NAMES));
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
        require(!isSecret(place, JsonData::lastStep(rest)), 403,
                "passwords and keys are not shown");
    }
}

void requireWritable(Place const& place) {
    require(place.session.isAdministrator(), 403, "only an administrator may change this");
    require(place.type != API_GATEWAY || !(place.path + ".").starts_with("users."), 403,
            "users cannot be changed here");
}
