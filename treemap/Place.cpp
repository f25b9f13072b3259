// The walk to a place: like a lookup, but it tells what is missing from what cannot be.
#include "treemap/Place.h"

#include <optional>

#include "JsonData.h"
#include "jsondata/JsonElement.h"
#include "jsondata/JsonMember.h"

namespace vobiutils {

namespace {

// What a token of `container` names: nothing if it cannot hold such a one. Only the next element of
// an array can be added at its own index.
Place step(json_object* container, PathToken token) {
    if (!token.isIndex()) {
        if (!json_object_is_type(container, json_type_object)) {
            return {};
        }
        Member const member = findMember(container, token);
        return {member ? TreeMapObject::PRESENT : TreeMapObject::VACANT, member.value(), container,
                token};
    }
    std::optional<size_t> const count = elementCount(container);
    size_t const index = static_cast<size_t>(indexOf(token));
    if (!count || index > *count) {
        return {};
    }
    return {index < *count ? TreeMapObject::PRESENT : TreeMapObject::VACANT,
            json_object_array_get_idx(container, index), container, token, index};
}

// Below what is created on the way, an array begins with element 0, written without leading zeros.
bool canBeCreated(PathCursor at) {
    while (!at.isLast()) {
        at.advance();
        if (at.token().isIndex() && at.token().start()[1] != '0') {
            return false;
        }
    }
    return true;
}

}  // namespace

Place findPlace(json_object* root, char const* path) {
    if (!JsonData::isPath(path)) {
        return {};
    }
    Place place = {TreeMapObject::PRESENT, root, nullptr, PathToken()};
    if (*path == '\0') {
        return place;
    }
    for (PathCursor at(path);; at.advance()) {
        place = step(place.value, at.token());
        if (place.presence == TreeMapObject::VACANT && !canBeCreated(at)) {
            return {};
        }
        if (place.presence != TreeMapObject::PRESENT || at.isLast()) {
            return place;
        }
    }
}

}  // namespace vobiutils
