// json-c's functions for a walk through the members of an object, which json-c before 0.16 does not have.
#pragma once

#include <json-c/json.h>

#if JSON_C_VERSION_NUM < ((0 << 16) | (16 << 8))
inline lh_entry* lh_table_head(lh_table const* members) { return members->head; }
inline lh_entry* lh_entry_next(lh_entry const* member) { return member->next; }
inline void lh_entry_set_val(lh_entry* member, void* value) { member->v = value; }
#endif
