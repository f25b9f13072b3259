// The loop, over the inside of json-c's containers: json-c's own loops are macros, for one type each.
#include "jsondata/JsonChildren.h"

#include "jsondata/files/JsonTable.h"

namespace vobiutils {

Children::Children(json_object* container) : elements_(json_object_get_array(container)) {
    lh_table const* const members = json_object_get_object(container);  // null unless an object
    if (members != nullptr) {
        member_ = lh_table_head(members);
    }
}

bool Children::next() {
    if (member_ != nullptr) {
        step_.name = static_cast<char const*>(lh_entry_k(member_));
        value_ = static_cast<json_object*>(lh_entry_v(member_));
        member_ = lh_entry_next(member_);
        return true;
    }
    if (elements_ != nullptr && index_ < elements_->length) {
        step_.index = index_;
        value_ = static_cast<json_object*>(elements_->array[index_++]);
        return true;
    }
    return false;
}

bool findChild(json_object* container, Step step, json_object*& child) {
    if (step.name != nullptr) {
        return json_object_object_get_ex(container, step.name, &child) != 0;
    }
    child = json_object_array_get_idx(container, step.index);
    return step.index < json_object_array_length(container);
}

}  // namespace vobiutils
