// Assignment by path: walks like a lookup, but creates what is missing on the way.
//
// Each step logs what it is about to do, does it, and logs a failure; walk() only looks at
// outcomes.
//
// Ordinarily a step enters a member or an element, and the last one stores the value. A step to a
// missing member creates it before anything is known of the next step, so always as an object. If
// the next step turns out to be an index, that empty object is replaced by an array
// (recreateAsArray):
//
//   set "lan.ports.[0]" in {"lan": {}}
//
//   step "lan"      enters                            {"lan": {}}
//   step "ports"    creates an object, and enters it  {"lan": {"ports": {}}}
//   step "[0]"      replaces it by an array           {"lan": {"ports": []}}
//                   and appends the value             {"lan": {"ports": [1]}}
//
// The same happens to an element that was appended as an object: in "list.[0].[0]" the first "[0]"
// appends {}, the second one turns it into []. The order is visible: in the log, and in the
// document when a later step fails, as what was created stays.
#include <assert.h>
#include <stdio.h>

#include "JsonData.h"
#include "jsondata/JsonAssign.h"
#include "jsondata/JsonElement.h"
#include "jsondata/JsonMember.h"
#include "jsondata/JsonPath.h"
#include "jsondata/JsonRef.h"
#include "logging/Log.h"

using namespace vobiutils;

namespace {

char const SET_JOBJ[] = "JsonData::setJObj";
int const STORED = 0;
int const FAILED = 2;

char const* boolText(bool value) { return value ? "true" : "false"; }

// One run along a path. A step either moves on to the next container or ends the run.
class Assignment {
  public:
    // Takes over the caller's reference on `value`, which may be null for JSON null.
    Assignment(json_object* root, json_object* value)
        : reference_(value), replaced_(nullptr), container_(root) {}

    // True when the value is stored.
    bool run(char const* path);

    json_object* container() const { return container_; }  // that the value was stored in
    PathToken lastToken() const { return previous_; }      // under which name

  private:
    enum Outcome { CONTINUE, DONE, REFUSED };

    char const* appendToRootArray(char const* path);
    Outcome walk(char const* path);
    Outcome step(PathCursor const& at);

    Outcome setMember(PathToken key);
    Outcome enterMember(PathToken key);
    Outcome createMember(PathToken key);

    Outcome stepToIndex(PathCursor const& at);
    bool becomeArray();
    bool recreateAsArray();
    bool replaceContainer(json_object* replacement);
    Outcome replaceElement(unsigned int index, PathToken token);
    Outcome enterElement(unsigned int index, PathToken token);
    Outcome appendElement(unsigned int index, PathToken token, bool isLast);
    Outcome appendFailed(unsigned int index);

    void enter(json_object* child) {
        parent_ = container_;
        container_ = child;
    }

    bool const debug_ = enabled(LOG_TYPE_DEBUG, LOG_GROUP_UTIL);
    JsonRef reference_;  // on the value, until the value is stored
    JsonRef replaced_;   // kept to the end: the caller's path may be a string inside it
    json_object* container_;
    json_object* parent_ = nullptr;
    bool isNew_ = false;  // the container was created by this run
    PathToken previous_;  // the token that led to the container
    char rewritten_[256];
};

bool Assignment::run(char const* path) {
    if (*path != '[' && isArray(container_)) {
        path = appendToRootArray(path);
    }
    if (walk(path) != DONE) {
        return false;
    }
    reference_.release();
    UTIL_DEBUG_IF(debug_, "%s: FOUND parent=%p key=%.*s\n", "setJObj",
                  static_cast<void*>(container_), TOKEN_ARGS(previous_));
    return true;
}

// A member name applied to a root array appends a new element that gets that member. The rewritten
// path is cut to what the buffer holds.
char const* Assignment::appendToRootArray(char const* path) {
    UTIL_WARN("%s: setting an TMO into an array, append it to the array by default\n", SET_JOBJ);
    snprintf(rewritten_, sizeof rewritten_, "[%d].%s",
             static_cast<int>(json_object_array_length(container_)), path);
    return rewritten_;
}

Assignment::Outcome Assignment::walk(char const* path) {
    for (PathCursor at(path);; at.advance()) {
        Outcome const outcome = step(at);
        previous_ = at.token();
        if (outcome != CONTINUE) {
            assert(outcome != DONE || at.isLast());
            return outcome;
        }
        if (at.isLast()) {
            UTIL_DEBUG_IF(debug_, "%s: why do I come here?\n", "setJObj");
            return REFUSED;
        }
    }
}

Assignment::Outcome Assignment::step(PathCursor const& at) {
    PathToken const token = at.token();
    UTIL_DEBUG_IF(debug_, "%s: Parse: idx=%d key=%.*s isEnd=%s\n", "setJObj", at.index(),
                  TOKEN_ARGS(token), boolText(at.isLast()));
    if (token.isIndex()) {
        return stepToIndex(at);
    }
    return at.isLast() ? setMember(token) : enterMember(token);
}

Assignment::Outcome Assignment::setMember(PathToken key) {
    UTIL_DEBUG_IF(debug_, "%s: set jval to current object jcrr=%p jval=%p %.*s.%.*s\n", SET_JOBJ,
                  static_cast<void*>(container_), static_cast<void*>(reference_.get()),
                  TOKEN_ARGS(previous_), TOKEN_ARGS(key));
    if (!putMember(container_, key, reference_.get(), replaced_)) {
        UTIL_ERROR("%s: fail to add jval '%.*s' to jcrr=%p jprt=%p\n", SET_JOBJ, TOKEN_ARGS(key),
                   static_cast<void*>(container_), static_cast<void*>(parent_));
        return REFUSED;
    }
    return DONE;
}

// intended: enters an existing member whatever its type; the next step reports a mismatch.
Assignment::Outcome Assignment::enterMember(PathToken key) {
    Member const child = findMember(container_, key);
    isNew_ = !child;
    UTIL_DEBUG_IF(debug_, "%s: get child object at '%.*s.%.*s' isNew=%s\n", SET_JOBJ,
                  TOKEN_ARGS(previous_), TOKEN_ARGS(key), boolText(isNew_));
    if (isNew_) {
        return createMember(key);
    }
    enter(child.value());
    return CONTINUE;
}

Assignment::Outcome Assignment::createMember(PathToken key) {
    UTIL_DEBUG_IF(debug_, "%s: create new empty jchl to current object %.*s.%.*s\n", SET_JOBJ,
                  TOKEN_ARGS(previous_), TOKEN_ARGS(key));
    JsonRef child(json_object_new_object());
    if (!child || !addMember(container_, key, child.get())) {
        UTIL_ERROR("%s: fail to add new object '%.*s'\n", SET_JOBJ, TOKEN_ARGS(key));
        return REFUSED;
    }
    enter(child.release());
    return CONTINUE;
}

Assignment::Outcome Assignment::stepToIndex(PathCursor const& at) {
    PathToken const token = at.token();
    int64_t const number = indexOf(token);
    if (number < 0) {
        UTIL_ERROR("%s: wrong array format %.*s\n", SET_JOBJ, TOKEN_ARGS(token));
        return REFUSED;
    }
    unsigned int const index = static_cast<unsigned int>(number);
    if (!becomeArray()) {
        return REFUSED;
    }
    if (index >= json_object_array_length(container_)) {
        return appendElement(index, token, at.isLast());
    }
    return at.isLast() ? replaceElement(index, token) : enterElement(index, token);
}

// An index step needs an array. Only a container that this run has created is turned into one.
bool Assignment::becomeArray() {
    if (json_object_is_type(container_, json_type_array)) {
        return true;
    }
    if (!isNew_) {
        UTIL_ERROR("%s: existing object is not array '%.*s'\n", SET_JOBJ, TOKEN_ARGS(previous_));
        return false;
    }
    if (parent_ == nullptr) {
        UTIL_ERROR("%s: how can jcrr is created new '%.*s' when it is root object\n", SET_JOBJ,
                   TOKEN_ARGS(previous_));
        return false;
    }
    if (!recreateAsArray()) {
        UTIL_ERROR("%s: cannot add new array element!\n", SET_JOBJ);
        return false;
    }
    return true;
}

// Replaces the empty object that this run has just created, and that container_ points to, by an
// empty array. It is a member of parent_ called previous_, or the last element of parent_. The
// object is released with its only reference.
bool Assignment::recreateAsArray() {
    UTIL_DEBUG_IF(debug_, "%s: recreate array object '%.*s' delete %p=%d\n", "setJObj",
                  TOKEN_ARGS(previous_), static_cast<void*>(container_), 1);
    assert(json_object_object_length(container_) == 0);
    JsonRef array(json_object_new_array());
    if (!array || !replaceContainer(array.get())) {
        return false;
    }
    container_ = array.release();
    return true;
}

bool Assignment::replaceContainer(json_object* replacement) {
    if (json_object_is_type(parent_, json_type_array)) {
        size_t const last = json_object_array_length(parent_) - 1;
        assert(json_object_array_get_idx(parent_, last) == container_);
        return json_object_array_put_idx(parent_, last, replacement) == 0;
    }
    JsonRef former(nullptr);
    return putMember(parent_, previous_, replacement, former);
}

Assignment::Outcome Assignment::replaceElement(unsigned int index, PathToken token) {
    int const number = static_cast<int>(index);
    UTIL_DEBUG_IF(debug_, "%s: replace array element at idx=%d '%.*s.%.*s'\n", SET_JOBJ, number,
                  TOKEN_ARGS(previous_), TOKEN_ARGS(token));
    replaced_.reset(json_object_get(json_object_array_get_idx(container_, index)));
    if (json_object_array_put_idx(container_, index, reference_.get()) != 0) {
        UTIL_ERROR("%s: fail to replace array element %d %.*s.%.*s\n", SET_JOBJ, number,
                   TOKEN_ARGS(previous_), TOKEN_ARGS(token));
        return REFUSED;
    }
    return DONE;
}

Assignment::Outcome Assignment::enterElement(unsigned int index, PathToken token) {
    int const number = static_cast<int>(index);
    UTIL_DEBUG_IF(debug_, "%s: get array element at idx=%d, '%.*s.%.*s'\n", SET_JOBJ, number,
                  TOKEN_ARGS(previous_), TOKEN_ARGS(token));
    json_object* const element = json_object_array_get_idx(container_, index);
    if (element == nullptr) {
        UTIL_ERROR("%s: cannot get array element at idx=%d '%.*s.%.*s'\n", SET_JOBJ, number,
                   TOKEN_ARGS(previous_), TOKEN_ARGS(token));
        return REFUSED;
    }
    enter(element);
    return CONTINUE;
}

// intended: the element is appended whatever the index is, without a gap. Unless the token is the
// last, the element is a new empty object.
Assignment::Outcome Assignment::appendElement(unsigned int index, PathToken token, bool isLast) {
    UTIL_DEBUG_IF(debug_, "%s: add new array element at %d '%.*s.%.*s'\n", SET_JOBJ,
                  static_cast<int>(index), TOKEN_ARGS(previous_), TOKEN_ARGS(token));
    if (isLast) {
        bool const added = json_object_array_add(container_, reference_.get()) == 0;
        return added ? DONE : appendFailed(index);
    }
    JsonRef element(json_object_new_object());
    if (!element || json_object_array_add(container_, element.get()) != 0) {
        return appendFailed(index);
    }
    isNew_ = true;
    enter(element.release());
    return CONTINUE;
}

Assignment::Outcome Assignment::appendFailed(unsigned int index) {
    UTIL_ERROR("%s: fail to add new array element idx=%d key=%.*s\n", SET_JOBJ,
               static_cast<int>(index), TOKEN_ARGS(previous_));
    return REFUSED;
}

bool isAcceptable(json_object* root, char const* path) {
    if (root == nullptr || path == nullptr || *path == '\0') {
        UTIL_ERROR("%s: wrong params jobj=%p path=%p\n", SET_JOBJ, static_cast<void*>(root),
                   static_cast<void const*>(path));
        return false;
    }
    return true;
}

}  // namespace

bool vobiutils::assign(json_object* root, char const* path, json_object* value) {
    Assignment assignment(root, value);
    return isAcceptable(root, path) && assignment.run(path);
}

// The document's reference is taken before anything is released, so that storing a value over
// itself is safe.
int JsonData::setJObj(json_object* jobj, char const* path, json_object* jval) {
    return assign(jobj, path, json_object_get(jval)) ? STORED : FAILED;
}

int JsonData::setJObj(json_object* jobj, char const* path, json_object* jval, json_object*& parent,
                      char const*& key) {
    if (!isAcceptable(jobj, path)) {
        return FAILED;
    }
    Assignment assignment(jobj, json_object_get(jval));
    if (!assignment.run(path)) {
        return FAILED;
    }
    parent = assignment.container();
    key = duplicate(assignment.lastToken());  // released by the caller, with free
    return STORED;
}
