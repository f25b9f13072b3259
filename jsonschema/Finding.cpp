// Keeps the first fault in the order of the document.
#include "jsonschema/Finding.h"

#include <assert.h>

#include <algorithm>

namespace jsonschema {

unsigned int Finding::keep(Place const& place, Node const& schema, Instruction const& cause,
                           bool undecided) {
    Finding found;
    found.cause_ = &cause;
    found.schema_ = &schema;
    found.undecided_ = undecided;
    found.ofName_ = place.isName;
    // a container takes a level of its own, so there are fewer than limits::DEPTH
    for (Place const* at = &place; at->container != nullptr; at = at->container) {
        assert(found.depth_ < static_cast<unsigned int>(limits::DEPTH));
        found.numbers_[found.depth_++] = at->number;
    }
    std::reverse(found.numbers_, found.numbers_ + found.depth_);
    keepFirst(found);
    return found.depth_;
}

void Finding::keepFirst(Finding const& other) {
    if (!other.isEmpty() && (isEmpty() || other.comesBefore(*this))) {
        *this = other;
    }
}

void Finding::keepLast(Finding const& other) {
    if (!other.isEmpty() && (isEmpty() || comesBefore(other))) {
        *this = other;
    }
}

bool Finding::comesBefore(Finding const& other) const {
    if (undecided_ != other.undecided_) {
        return other.undecided_;
    }
    return std::lexicographical_compare(begin(), end(), other.begin(), other.end());
}

}  // namespace jsonschema
