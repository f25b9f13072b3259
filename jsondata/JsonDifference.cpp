// The difference of two documents, as a document.
#include "JsonData.h"
#include "jsondata/JsonChildren.h"
#include "jsondata/JsonRef.h"
#include "jsondata/PathText.h"
#include "treemap/NewHandle.h"

using namespace vobiutils;

namespace {

// Takes over a reference on `value`.
bool put(json_object* object, char const* name, json_object* value) {
    if (json_object_object_add(object, name, value) == 0) {
        return true;
    }
    json_object_put(value);
    return false;
}

bool putCopy(json_object* object, char const* name, json_object* value) {
    json_object* copy = nullptr;
    if (value != nullptr && json_object_deep_copy(value, &copy, nullptr) != 0) {
        json_object_put(copy);
        return false;
    }
    return put(object, name, copy);
}

bool hasPath(Step step) { return step.name == nullptr || isNameable(step.name); }

// One comparison. Each function returns false when out of memory.
class Difference {
  public:
    explicit Difference(json_object* entries) : entries_(entries) {}

    bool compare(json_object* before, json_object* after);

  private:
    bool compareChildren(json_object* before, json_object* after);
    bool compareChild(Children const& old, json_object* after);
    bool add(json_object* const* before, json_object* const* after);

    json_object* const entries_;
    PathText path_;
};

// Whether every child of `one` that no path can name is the same in `other`.
bool hasSameNameless(json_object* one, json_object* other) {
    for (Children children(one); children.next();) {
        json_object* counterpart = nullptr;
        if (!hasPath(children.step()) && (!findChild(other, children.step(), counterpart) ||
                                          json_object_equal(children.value(), counterpart) == 0)) {
            return false;
        }
    }
    return true;
}

bool Difference::compare(json_object* before, json_object* after) {
    json_type const type = json_object_get_type(before);
    if ((type == json_type_object || type == json_type_array) &&
        json_object_is_type(after, type) != 0 && hasSameNameless(before, after) &&
        hasSameNameless(after, before)) {
        return compareChildren(before, after);
    }
    return json_object_equal(before, after) != 0 || add(&before, &after);
}

// Two objects or two arrays: first what there was, then what is new.
bool Difference::compareChildren(json_object* before, json_object* after) {
    size_t const here = path_.length();
    for (Children children(before); children.next(); path_.cut(here)) {
        if (hasPath(children.step()) &&
            !(path_.push(children.step()) && compareChild(children, after))) {
            return false;
        }
    }
    for (Children children(after); children.next(); path_.cut(here)) {
        json_object* const added = children.value();
        json_object* old = nullptr;
        if (hasPath(children.step()) && !findChild(before, children.step(), old) &&
            !(path_.push(children.step()) && add(nullptr, &added))) {
            return false;
        }
    }
    return true;
}

bool Difference::compareChild(Children const& old, json_object* after) {
    json_object* const before = old.value();
    json_object* counterpart = nullptr;
    return findChild(after, old.step(), counterpart) ? compare(before, counterpart)
                                                     : add(&before, nullptr);
}

// A null pointer stands for nothing, a pointer to null for JSON null.
bool Difference::add(json_object* const* before, json_object* const* after) {
    JsonRef entry(json_object_new_object());
    json_object* const path = entry ? path_.newString() : nullptr;
    if (path == nullptr || !put(entry.get(), "path", path) ||
        (before != nullptr && !putCopy(entry.get(), "before", *before)) ||
        (after != nullptr && !putCopy(entry.get(), "after", *after)) ||
        json_object_array_add(entries_, entry.get()) != 0) {
        return false;
    }
    entry.release();
    return true;
}

}  // namespace

TreeMapObject* JsonData::difference(TreeMapObject* before, TreeMapObject* after) {
    JsonRef entries(json_object_new_array());
    if (before == nullptr || after == nullptr || !entries ||
        !Difference(entries.get()).compare(before->jobj, after->jobj)) {
        return nullptr;
    }
    return tryOwningHandle(entries.release());
}
