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

Step toMember(json_object* container, PathCursor const& at, bool debug) {
    lh_entry const* const member = findMember(container, at.token());
    if (member == nullptr) {
        return {};
    }
    if (at.isLast()) {
        UTIL_DEBUG_IF(debug, "%s: found the object %.*s\n", "getJObj", TOKEN_ARGS(at.token()));
    } else {
        UTIL_DEBUG_IF(debug, "%s: continue search next key\n", "getJObj");
    }
    return {true, valueOf(member)};
}

Step toElement(json_object* container, PathToken token) {
    if (!token.hasIndexNumber()) {
        UTIL_ERROR("Wrong array index %.*s - size:%d\n", TOKEN_ARGS(token), token.width());
        return {};
    }
    unsigned int const index = indexOf(token);
    array_list const* const elements = json_object_get_array(container);  // null unless an array
    if (elements == nullptr) {
        UTIL_ERROR("Object is not array '%s'!\n",
                   json_type_to_name(json_object_get_type(container)));
        return {};
    }
    int const length = static_cast<int>(elements->length);
    if (index >= elements->length) {
        UTIL_ERROR("Request wrong index num=%d len=%d!\n", static_cast<int>(index), length);
        return {};
    }
    json_object* const element = static_cast<json_object*>(elements->array[index]);
    if (element == nullptr) {
        UTIL_ERROR("Cannot get array index num=%d len=%d!\n", static_cast<int>(index), length);
    }
    return {element != nullptr, element};
}

Step take(json_object* container, PathCursor const& at, bool debug) {
    UTIL_DEBUG_IF(debug, "%s: Parse: idx=%d key=%.*s isEnd=%s\n", "getJObj", at.index(),
                  TOKEN_ARGS(at.token()), at.isLast() ? "true" : "false");
    return at.token().isIndex() ? toElement(container, at.token()) : toMember(container, at, debug);
}

void walk(json_object* root, char const* path, bool debug, Lookup& result) {
    result.parent = root;
    json_object* container = root;
    for (PathCursor at(path);; at.advance()) {
        Step const step = take(container, at, debug);
        if (step.found) {
            result.parent = container;
        }
        if (at.isLast() || !step.found) {
            result.outcome = at.isLast() ? Lookup::ENDED : Lookup::STRAYED;
            result.value = step.value;
            result.last = at.token();
            return;
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
    bool const debug = logging::enabled(LOG_TYPE_DEBUG, LOG_GROUP_UTIL);
    walk(root, path, debug, result);
    if (result.outcome == Lookup::STRAYED) {
        UTIL_DEBUG_IF(debug, "%s: cannot found the object %s\n", "getJObj", path);
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
