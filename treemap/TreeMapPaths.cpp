// Search by value that logs nothing and gives paths.
#include <string.h>

#include "TreeMapObject.h"
#include "jsondata/JsonChildren.h"
#include "jsondata/JsonRef.h"
#include "jsondata/PathText.h"
#include "jsondata/StrictParse.h"
#include "treemap/NewHandle.h"

using namespace vobiutils;

namespace {

// One search: depth-first, in document order. Each function returns false when out of memory.
class PathSearch {
  public:
    PathSearch(json_object* paths, char const* name, char const* text)
        : paths_(paths), name_(name), text_(text) {}

    bool readText();
    bool in(json_object* container);

  private:
    bool matches(json_object* value) const;
    bool add();

    json_object* const paths_;
    char const* const name_;
    char const* const text_;   // null for any value
    bool isJson_ = false;      // the text
    JsonRef wanted_{nullptr};  // and its value
    PathText path_;
};

bool PathSearch::readText() {
    JsonFault fault = {};
    isJson_ = text_ != nullptr && parseStrictly(text_, wanted_, fault);
    return text_ == nullptr || isJson_ || fault.line != 0;
}

bool PathSearch::in(json_object* container) {
    size_t const here = path_.length();
    for (Children children(container); children.next(); path_.cut(here)) {
        char const* const name = children.step().name;
        if (name != nullptr && !isNameable(name)) {
            continue;
        }
        bool const isHit = name != nullptr && strcmp(name, name_) == 0 && matches(children.value());
        if (!path_.push(children.step()) || (isHit && !add()) || !in(children.value())) {
            return false;
        }
    }
    return true;
}

bool PathSearch::matches(json_object* value) const {
    if (text_ == nullptr) {
        return true;
    }
    switch (json_object_get_type(value)) {
        case json_type_string:
            return static_cast<size_t>(json_object_get_string_len(value)) == strlen(text_) &&
                   strcmp(json_object_get_string(value), text_) == 0;
        case json_type_object:
        case json_type_array: return false;
        default: return isJson_ && json_object_equal(value, wanted_.get()) != 0;
    }
}

bool PathSearch::add() {
    json_object* const text = path_.newString();
    if (text != nullptr && json_object_array_add(paths_, text) == 0) {
        return true;
    }
    json_object_put(text);
    return false;
}

}  // namespace

TreeMapObject* TreeMapObject::findPaths(char const* name, char const* text) {
    JsonRef paths(json_object_new_array());
    PathSearch search(paths.get(), name, text);
    if (!paths || !search.readText() || (name != nullptr && !search.in(jobj))) {
        return nullptr;
    }
    return tryOwningHandle(paths.release());
}
