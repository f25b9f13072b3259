// A loop over what a json-c value holds, whatever its type.
#pragma once

#include <json-c/json.h>
#include <stddef.h>

namespace vobiutils {

// Where a child is in its container.
struct Step {
    char const* name;  // null in an array
    size_t index;
};

// Each member or element, in order; a plain value has none:
//
//   for (Children children(value); children.next();) {
//       ... children.step() ... children.value() ...
//   }
//
// Nothing is added to the container or removed from it meanwhile.
class Children {
  public:
    explicit Children(json_object* container);

    bool next();

    Step step() const { return step_; }
    json_object* value() const { return value_; }  // null for JSON null

  private:
    lh_entry const* member_ = nullptr;  // the next one, of an object
    array_list const* elements_;        // of an array
    size_t index_ = 0;                  // of the next one
    Step step_ = {};
    json_object* value_ = nullptr;
};

// The child of `container` at a step that a container of the same type has. False if there is none.
bool findChild(json_object* container, Step step, json_object*& child);

}  // namespace vobiutils
