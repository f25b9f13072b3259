// Lookup by path. lookUp does the walk; the two JsonData::getJObj adapt its result to their
// out-parameters.
#include "jsondata/JsonLookup.h"

#include <string.h>

#include <new>
#include <optional>

#include "JsonData.h"
#include "jsondata/JsonElement.h"
#include "jsondata/JsonMember.h"
#include "logging/Log.h"

using namespace vobiutils;

namespace {

// The DEBUG lines of a walk. Whether they are enabled is checked once, in the constructor, so that
// each step of a walk without them costs one test.
class Trace {
  public:
    explicit Trace(char const* path)
        : enabled_(enabled(LOG_TYPE_DEBUG, LOG_GROUP_UTIL)), path_(path) {}

    void parse(PathCursor const& at) const {
        UTIL_DEBUG_IF(enabled_, "%s: Parse: idx=%d key=%.*s isEnd=%s\n", "getJObj", at.index(),
                      TOKEN_ARGS(at.token()), at.isLast() ? "true" : "false");
    }
    void member(PathCursor const& at) const {
        UTIL_DEBUG_IF(enabled_ && at.isLast(), "%s: found the object %.*s\n", "getJObj",
                      TOKEN_ARGS(at.token()));
        UTIL_DEBUG_IF(enabled_ && !at.isLast(), "%s: continue search next key\n", "getJObj");
    }
    void strayed() const {
        UTIL_DEBUG_IF(enabled_, "%s: cannot found the object %s\n", "getJObj", path_);
    }

  private:
    bool const enabled_;
    char const* const path_;
};

void reportNoElement(json_object* array, unsigned int index) {
    int const number = static_cast<int>(index);
    int const length = static_cast<int>(json_object_array_length(array));
    if (index >= json_object_array_length(array)) {
        UTIL_ERROR("Request wrong index num=%d len=%d!\n", number, length);
    } else {
        UTIL_ERROR("Cannot get array index num=%d len=%d!\n", number, length);
    }
}

// One step each: the value that the token leads to, or nothing. A member may be JSON null, and its
// value then a null pointer; an element that is JSON null counts as missing.
std::optional<json_object*> toMember(json_object* container, PathCursor const& at,
                                     Trace const& trace) {
    Member const member = findMember(container, at.token());
    if (!member) {
        return std::nullopt;
    }
    trace.member(at);
    return member.value();
}

// Not inlined, so that steps to members do not pay for its registers: one of 16 members takes 22 ns
// instead of 25.
[[gnu::noinline]] std::optional<json_object*> toElement(json_object* container, PathToken token) {
    int64_t const number = indexOf(token);
    if (number < 0) {
        UTIL_ERROR("Wrong array index %.*s - size:%d\n", TOKEN_ARGS(token),
                   static_cast<int>(token.text().size()));
        return std::nullopt;
    }
    if (!isArray(container)) {
        UTIL_ERROR("Object is not array '%s'!\n",
                   json_type_to_name(json_object_get_type(container)));
        return std::nullopt;
    }
    unsigned int const index = static_cast<unsigned int>(number);
    json_object* const value = json_object_array_get_idx(container, index);
    if (value == nullptr) {
        reportNoElement(container, index);
        return std::nullopt;
    }
    return value;
}

std::optional<json_object*> step(json_object* container, PathCursor const& at, Trace const& trace) {
    trace.parse(at);
    return at.token().isIndex() ? toElement(container, at.token()) : toMember(container, at, trace);
}

// For a path that is not empty. The walk ends at the first step that leads nowhere, or at the last
// token:
//
//   {"lan": {"mtu": 1500}}     value   parent       last
//   "lan.mtu"                  1500    the lan      "mtu"
//   "lan.vlan"                 null    the root     "vlan"
//   "lan.vlan.id"              null    the root     "vlan", outcome STRAYED
//
// intended: `parent` is the container of the last token that was found, so a last token that is not
// there leaves it one level above the container that was searched.
Lookup walk(json_object* root, char const* path) {
    Trace const trace(path);
    json_object* parent = root;
    json_object* container = root;
    std::optional<json_object*> value;
    PathCursor at(path);
    for (;;) {
        value = step(container, at, trace);
        if (value) {
            parent = container;
        }
        if (!value || at.isLast()) {
            break;
        }
        container = *value;
        at.advance();
    }
    if (!at.isLast()) {
        trace.strayed();
    }
    UTIL_HOT_INFO("%s: FOUND parent=%p, key=%.*s\n", "getJObj", static_cast<void*>(parent),
                  TOKEN_ARGS(at.token()));
    return {at.isLast() ? Lookup::ENDED : Lookup::STRAYED, value.value_or(nullptr), parent,
            at.token()};
}

// A copy for the caller of the library, who releases it with delete[]. Null for an empty token, and
// when out of memory.
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
