// Reading by path: lookUp walks, getJObj hands out.
#include "jsondata/JsonLookup.h"

#include <string.h>

#include <new>

#include "JsonData.h"
#include "jsondata/JsonMember.h"
#include "logging/Log.h"

using namespace vobiutils;

namespace {

// What the level DEBUG tells of a walk. Whether it is on is asked once, and then costs a null test.
class Trace {
  public:
    explicit Trace(char const* path)
        : path_(enabled(LOG_TYPE_DEBUG, LOG_GROUP_UTIL) ? path : nullptr) {}

    void parse(PathCursor const& at) const {
        UTIL_DEBUG_IF(path_ != nullptr, "%s: Parse: idx=%d key=%.*s isEnd=%s\n", "getJObj",
                      at.index(), TOKEN_ARGS(at.token()), at.isLast() ? "true" : "false");
    }
    void member(PathCursor const& at) const {
        UTIL_DEBUG_IF(path_ != nullptr && at.isLast(), "%s: found the object %.*s\n", "getJObj",
                      TOKEN_ARGS(at.token()));
        UTIL_DEBUG_IF(path_ != nullptr && !at.isLast(), "%s: continue search next key\n",
                      "getJObj");
    }
    void strayed() const {
        UTIL_DEBUG_IF(path_ != nullptr, "%s: cannot found the object %s\n", "getJObj", path_);
    }

  private:
    char const* path_;
};

// The steps: false when the token leads nowhere. A member can be found and be null: JSON null.
bool toMember(json_object* container, PathCursor const& at, Trace trace, json_object*& value) {
    lh_entry const* const member = findMember(container, at.token()).entry;
    if (member == nullptr) {
        return false;
    }
    trace.member(at);
    value = valueOf(member);
    return true;
}

bool toElement(json_object* container, PathToken token, json_object*& value) {
    int64_t const number = indexOf(token);
    if (number < 0) {
        UTIL_ERROR("Wrong array index %.*s - size:%d\n", TOKEN_ARGS(token),
                   static_cast<int>(token.text().size()));
        return false;
    }
    unsigned int const index = static_cast<unsigned int>(number);
    array_list const* const elements = json_object_get_array(container);  // null unless an array
    if (elements == nullptr) {
        UTIL_ERROR("Object is not array '%s'!\n",
                   json_type_to_name(json_object_get_type(container)));
        return false;
    }
    int const length = static_cast<int>(elements->length);
    if (index >= elements->length) {
        UTIL_ERROR("Request wrong index num=%d len=%d!\n", static_cast<int>(index), length);
        return false;
    }
    value = static_cast<json_object*>(elements->array[index]);
    if (value == nullptr) {
        UTIL_ERROR("Cannot get array index num=%d len=%d!\n", static_cast<int>(index), length);
        return false;
    }
    return true;
}

bool take(json_object* container, PathCursor const& at, Trace trace, json_object*& value) {
    trace.parse(at);
    value = nullptr;
    return at.token().isIndex() ? toElement(container, at.token(), value)
                                : toMember(container, at, trace, value);
}

// The path is not empty.
Lookup walk(json_object* root, char const* path) {
    Trace const trace(path);
    json_object* parent = root;
    json_object* container = root;
    json_object* value = nullptr;
    PathCursor at(path);
    while (take(container, at, trace, value)) {
        parent = container;
        if (at.isLast()) {
            break;
        }
        container = value;
        at.advance();
    }
    bool const ended = at.isLast();
    if (!ended) {
        trace.strayed();
    }
    // said for every walk, whatever it found: a flag test in a build for size, too
    if (enabled(LOG_TYPE_INFO, LOG_GROUP_UTIL)) {
        UTIL_INFO("%s: FOUND parent=%p, key=%.*s\n", "getJObj", static_cast<void*>(parent),
                  TOKEN_ARGS(at.token()));
    }
    return {ended ? Lookup::ENDED : Lookup::STRAYED, value, parent, at.token()};
}

// Null for an empty token, and without memory. The caller of the library releases it with delete[].
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

Lookup vobiutils::lookUp(json_object* root, char const* path) {
    if (root == nullptr || path == nullptr) {
        UTIL_ERROR("%s: wrong params jobj=%p path=%p\n", "getJObj", static_cast<void*>(root),
                   static_cast<void const*>(path));
        return {};
    }
    if (*path == '\0') {
        return {Lookup::ROOT, root, nullptr, PathToken()};
    }
    return walk(root, path);
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
