// Reads json-c values without writing to them.
#include "jsonschema/Json.h"

namespace jsonschema {

lh_entry* findMember(json_object* object, char const* name) {
    int const fewMembers = 8;  // comparing them costs less than hashing the name
    if (!is(object, json_type_object)) {
        return nullptr;
    }
    lh_table* const members = json_object_get_object(object);
    if (lh_table_length(members) > fewMembers) {
        return lh_table_lookup_entry(members, name);
    }
    lh_entry* member = lh_table_head(members);
    while (member != nullptr && (*nameOf(member) != *name || strcmp(nameOf(member), name) != 0)) {
        member = lh_entry_next(member);
    }
    return member;
}

}  // namespace jsonschema
