// Finds the first fault: remembers of all that are reported the one whose value comes first in the
// instance.
#pragma once

#include <assert.h>

#include "jsonschema/Limits.h"

namespace jsonschema {

struct Instruction;
struct Node;

// A value on the way from the instance to the value at hand: which member or element it is of its
// container. The container is one frame of the stack further up.
struct Place {
    Place const* container = nullptr;  // null for the instance itself
    unsigned int number = 0;
    bool isName = false;  // stands for the name of the member instead of its value
};

class Finding {
  public:
    // Keeps a fault of the value at `place`, unless the one it has comes first. A fault that was not
    // decided gives way to any other. Returns how deep the value is.
    unsigned int keep(Place const& place, Node const& schema, Instruction const& cause,
                      bool undecided);

    // Takes over the fault of the other one, if it comes before, or after, its own.
    void keepFirst(Finding const& other);
    void keepLast(Finding const& other);

    bool isEmpty() const { return cause_ == nullptr; }
    bool isUndecided() const { return undecided_; }
    bool isOfName() const { return ofName_; }
    Node const& schema() const {
        assert(!isEmpty());
        return *schema_;
    }
    Instruction const& cause() const {
        assert(!isEmpty());
        return *cause_;
    }

    // The way to the value: the number of each member or element.
    unsigned int const* begin() const { return numbers_; }
    unsigned int const* end() const { return numbers_ + depth_; }

  private:
    bool comesBefore(Finding const& other) const;

    Instruction const* cause_ = nullptr;
    Node const* schema_ = nullptr;
    bool undecided_ = false;
    bool ofName_ = false;
    unsigned int depth_ = 0;
    unsigned int numbers_[limits::DEPTH];  // of which the first depth_ are set
};

}  // namespace jsonschema
