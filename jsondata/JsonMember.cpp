// Member search in json-c's hash table.
//
// Ordinarily a member is found by its hash: json_object_object_get_ex(object, name, &value). Two
// things are different here.
//
// A name in the middle of a path is not NUL-terminated, as json-c's hash function wants it:
//
//   "lan.dhcp.range"     "dhcp" has to be copied first, "range" is hashed where it is
//
// and reading back bytes that have just been written stalls: finding one of 16 members takes 17 ns
// where the name is hashed in place, 35 ns with a copy. That is why a name at the end of a path is
// not copied.
//
// Most objects have few members. In them the names are compared one by one, which needs no copy: a
// path of 8 tokens takes 73 ns, and 159 ns when every name is hashed. Objects with more members are
// hashed, as comparing gets slower with every member.
//
// (Figures: x86-64 with two cores, g++ 12, -O2, json-c 0.16.)
#include "jsondata/JsonMember.h"

#include <assert.h>
#include <stdlib.h>
#include <string.h>

#include "jsondata/files/JsonTable.h"

namespace vobiutils {

namespace {

// Up to so many members are compared. With 6, finding one of 8 in the middle of a path took 40 ns
// instead of 22. With 10, random paths over a document of 1 MB took 1.6 times as long as by hand
// instead of 1.3: comparing reads every name, from memory, where hashing reads one.
int const FEW_MEMBERS = 8;

// A longer name in the middle of a path is compared with all members: it is not worth a heap block.
size_t const LONGEST_COPY = 127;

// The first two characters tell most names apart without a call of strncmp: 73 ns instead of 90 for
// a path of 8 tokens. The second one counts where names begin alike ("dns1", "dns2"): 13 ns instead
// of 18 for one of 8 such members.
bool isNamed(char const* key, std::string_view name) {
    if (name.size() >= 2 && (key[0] != name[0] || key[1] != name[1])) {
        return false;
    }
    return strncmp(key, name.data(), name.size()) == 0 && key[name.size()] == '\0';
}

lh_entry* findByComparing(lh_table const* members, std::string_view name) {
    lh_entry* entry = lh_table_head(members);
    while (entry != nullptr && !isNamed(static_cast<char const*>(lh_entry_k(entry)), name)) {
        entry = lh_entry_next(entry);
    }
    return entry;
}

// lh_table_lookup_entry does the same by one more call.
lh_entry* findByHash(lh_table* members, char const* name) {
    return lh_table_lookup_entry_w_hash(members, name, lh_get_hash(members, name));
}

// For a name of up to LONGEST_COPY characters.
lh_entry* findByHashOfCopy(lh_table* members, std::string_view name) {
    assert(name.size() <= LONGEST_COPY);
    char copy[LONGEST_COPY + 1];
    name.copy(copy, name.size());
    copy[name.size()] = '\0';
    return findByHash(members, copy);
}

lh_entry* findEntry(lh_table* members, PathToken name) {
    if (members->count <= FEW_MEMBERS) {  // lh_table_length would be one more call: 1 to 2 ns
        return findByComparing(members, name.text());
    }
    if (name.isTerminated()) {
        return findByHash(members, name.start());
    }
    return name.text().size() <= LONGEST_COPY ? findByHashOfCopy(members, name.text())
                                              : findByComparing(members, name.text());
}

}  // namespace

Member findMember(json_object* container, PathToken name) {
    lh_table* const members = json_object_get_object(container);  // null unless it is an object
    return Member(members != nullptr ? findEntry(members, name) : nullptr);
}

bool addMember(json_object* container, PathToken name, json_object* value) {
    if (!json_object_is_type(container, json_type_object)) {
        return false;
    }
    assert(!findMember(container, name));
    char* const copy = name.isTerminated() ? nullptr : duplicate(name);
    char const* const key = name.isTerminated() ? name.start() : copy;
    bool const isAdded =
        key != nullptr &&
        json_object_object_add_ex(container, key, value, JSON_C_OBJECT_ADD_KEY_IS_NEW) == 0;
    free(copy);
    return isAdded;
}

// json_object_object_add would release the value replaced at once.
bool putMember(json_object* container, PathToken name, json_object* value, JsonRef& replaced) {
    Member const member = findMember(container, name);
    if (!member) {
        return addMember(container, name, value);
    }
    if (value == container) {
        return false;
    }
    replaced.reset(member.value());
    lh_entry_set_val(member.entry(), value);
    return true;
}

bool deleteMember(json_object* container, PathToken name) {
    Member const member = findMember(container, name);
    return member && lh_table_delete_entry(json_object_get_object(container), member.entry()) == 0;
}

}  // namespace vobiutils
