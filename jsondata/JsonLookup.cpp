// Reading by path: lookUp walks, getJObj hands out.
#include "JsonLookup.h"

#include <string.h>

#include <new>

#include "JsonData.h"
#include "JsonMember.h"
#include "Log.h"

namespace {

// What one token leads to. A member can be found and be null: JSON null.
struct Step {
    bool found = false;
    json_object* value = nullptr;
};

Step toMember(json_object* container, PathCursor const& at) {
    Step step;
    step.found = findMember(container, at.token().text(), step.value);
    if (step.found && at.isLast()) {
        UTIL_DEBUG("%s: found the object %.*s\n", "getJObj", TOKEN_ARGS(at.token()));
    } else if (step.found) {
        UTIL_DEBUG("%s: continue search next key\n", "getJObj");
    }
    return step;
}

Step toElement(json_object* container, PathToken token) {
    if (!token.hasIndexNumber()) {
        UTIL_ERROR("Wrong array index %.*s - size:%d\n", TOKEN_ARGS(token), token.width());
        return {};
    }
    unsigned int const index = BE_StrTo(token.indexNumberText());
    if (!json_object_is_type(container, json_type_array)) {
        UTIL_ERROR("Object is not array '%s'!\n",
                   json_type_to_name(json_object_get_type(container)));
        return {};
    }
    size_t const length = json_object_array_length(container);
    if (index >= length) {
        UTIL_ERROR("Request wrong index num=%d len=%d!\n", static_cast<int>(index),
                   static_cast<int>(length));
        return {};
    }
    json_object* const element = json_object_array_get_idx(container, index);
    if (element == nullptr) {
        UTIL_ERROR("Cannot get array index num=%d len=%d!\n", static_cast<int>(index),
                   static_cast<int>(length));
    }
    return {element != nullptr, element};
}

Step take(json_object* container, PathCursor const& at) {
    UTIL_DEBUG("%s: Parse: idx=%d key=%.*s isEnd=%s\n", "getJObj", at.index(),
               TOKEN_ARGS(at.token()), at.isLast() ? "true" : "false");
    return at.token().isIndex() ? toElement(container, at.token()) : toMember(container, at);
}

Lookup walk(json_object* root, char const* path) {
    Lookup result;
    result.parent = root;
    json_object* container = root;
    for (PathCursor at(path);; at.advance()) {
        Step const step = take(container, at);
        if (step.found) {
            result.parent = container;
        }
        if (at.isLast() || !step.found) {
            result.outcome = at.isLast() ? Lookup::ENDED : Lookup::STRAYED;
            result.value = step.value;
            result.last = at.token();
            return result;
        }
        container = step.value;
    }
}

// Null for an empty token, and without memory.
char const* copyOf(PathToken token) {
    size_t const length = token.text().size();
    if (length == 0) {
        return nullptr;
    }
    char* const copy = new (std::nothrow) char[length + 1];
    if (copy != nullptr) {
        memcpy(copy, token.start(), length);
        copy[length] = '\0';
    }
    return copy;
}

}  // namespace

Lookup lookUp(json_object* root, char const* path) {
    Lookup result;
    if (root == nullptr || path == nullptr) {
        UTIL_ERROR("%s: wrong params jobj=%p path=%p\n", "getJObj", static_cast<void*>(root),
                   static_cast<void const*>(path));
        return result;
    }
    if (*path == '\0') {
        result.outcome = Lookup::ROOT;
        result.value = root;
        return result;
    }
    result = walk(root, path);
    if (result.outcome == Lookup::STRAYED) {
        UTIL_DEBUG("%s: cannot found the object %s\n", "getJObj", path);
    }
    // said for every walk, whatever it found
    UTIL_INFO("%s: FOUND parent=%p, key=%.*s\n", "getJObj", static_cast<void*>(result.parent),
              TOKEN_ARGS(result.last));
    return result;
}

json_object* JsonData::getJObj(json_object* jobj, char const* path) {
    return lookUp(jobj, path).value;
}

json_object* JsonData::getJObj(json_object* jobj, char const* path, json_object*& parent,
                               char const*& key) {
    Lookup const found = lookUp(jobj, path);
    if (found.outcome == Lookup::REFUSED) {
        return nullptr;
    }
    bool const ended = found.outcome == Lookup::ENDED;
    parent = ended ? found.parent : nullptr;
    key = ended ? copyOf(found.last) : nullptr;
    return found.value;
}
