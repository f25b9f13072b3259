#include "jsondata/JsonMember.h"

#include <stdlib.h>
#include <string.h>

#include <string_view>

namespace vobiutils {

namespace {

bool isNamed(char const* key, PathToken name) {
    if (name.isTerminated()) {
        return strcmp(key, name.start()) == 0;
    }
    size_t const length = name.text().size();
    return strncmp(key, name.start(), length) == 0 && key[length] == '\0';
}

}  // namespace

// Two letters tell most names apart without a call.
lh_entry* findByScan(lh_table* members, PathToken name) {
    char const* const start = name.start();
    char const first = name.isEmpty() ? '\0' : start[0];
    char const second = first == '\0' || name.endsAt(start + 1) ? '\0' : start[1];
    lh_entry* entry = lh_table_head(members);
    for (; entry != nullptr; entry = lh_entry_next(entry)) {
        char const* const key = static_cast<char const*>(lh_entry_k(entry));
        if (key[0] == first && (first == '\0' || key[1] == second) && isNamed(key, name)) {
            break;
        }
    }
    return entry;
}

MemberPlace findByHashOfCopy(lh_table* members, std::string_view name) {
    char copy[NAME_ON_STACK + 1];
    memcpy(copy, name.data(), name.size());
    copy[name.size()] = '\0';
    return findByHash(members, copy);
}

// Past json_object_object_add_ex, which would copy and hash the name once more.
bool addMember(json_object* container, PathToken name, unsigned long hash, json_object* value) {
    lh_table* const members = json_object_get_object(container);
    char* const key = members != nullptr && value != container ? duplicate(name) : nullptr;
    if (key == nullptr) {
        return false;
    }
    if (hash == 0) {  // rather of the old text: hashing has to wait for a new one
        hash = lh_get_hash(members, name.isTerminated() ? name.start() : key);
    }
    if (lh_table_insert_w_hash(members, key, value, hash, 0) != 0) {
        free(key);
        return false;
    }
    return true;
}

bool putMember(json_object* container, PathToken name, json_object* value) {
    MemberPlace const place = findMember(container, name);
    if (place.entry == nullptr) {
        return addMember(container, name, place.hash, value);
    }
    json_object* const replaced = valueOf(place.entry);
    lh_entry_set_val(place.entry, value);
    json_object_put(replaced);
    return true;
}

void deleteMember(json_object* container, PathToken name) {
    lh_entry* const entry = findMember(container, name).entry;
    if (entry != nullptr) {
        lh_table_delete_entry(json_object_get_object(container), entry);
    }
}

}  // namespace vobiutils
