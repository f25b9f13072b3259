#include "JsonMember.h"

#include <stdlib.h>
#include <string.h>

#include <string_view>

namespace {

// The name as json-c wants it: in place, or copied to the stack where it fits.
class TerminatedName {
  public:
    static size_t const STACK_LENGTH = 127;

    explicit TerminatedName(PathToken name) : text_(name.start()) {
        if (!name.isTerminated()) {
            text_ = copy(name.text());
        }
    }
    ~TerminatedName() {
        if (heap_ != nullptr) {  // seldom: a call less
            free(heap_);
        }
    }
    TerminatedName(TerminatedName const&) = delete;
    TerminatedName& operator=(TerminatedName const&) = delete;

    char const* get() const { return text_; }  // null when there was no memory

  private:
    char const* copy(std::string_view name) {
        char* to = stack_;
        if (name.size() > STACK_LENGTH) {
            to = heap_ = static_cast<char*>(malloc(name.size() + 1));
        }
        if (to != nullptr) {
            name.copy(to, name.size());
            to[name.size()] = '\0';
        }
        return to;
    }

    char const* text_;
    char* heap_ = nullptr;
    char stack_[STACK_LENGTH + 1];
};

// Two letters tell most names apart without a call.
bool isNamed(lh_entry const* entry, std::string_view name) {
    char const* const key = static_cast<char const*>(lh_entry_k(entry));
    if (name.size() > 1 && (key[0] != name[0] || key[1] != name[1])) {
        return false;
    }
    return strncmp(key, name.data(), name.size()) == 0 && key[name.size()] == '\0';
}

// Not inlined, for a scan to do without the room for the copy.
[[gnu::noinline]] lh_entry* copyAndHash(lh_table* members, PathToken name) {
    TerminatedName const key(name);
    return lh_table_lookup_entry(members, key.get());
}

bool store(json_object* container, PathToken name, json_object* value, unsigned int options) {
    TerminatedName const key(name);
    return json_object_is_type(container, json_type_object) && key.get() != nullptr &&
           json_object_object_add_ex(container, key.get(), value, options) == 0;
}

}  // namespace

// Comparing a few names costs less than copying and hashing one. A very long name is not worth a
// heap block either.
lh_entry* scanOrHash(lh_table* members, PathToken name) {
    int const scanLimit = 20;
    std::string_view const text = name.text();
    if (lh_table_length(members) > scanLimit && text.size() <= TerminatedName::STACK_LENGTH) {
        return copyAndHash(members, name);
    }
    lh_entry* entry = lh_table_head(members);
    while (entry != nullptr && !isNamed(entry, text)) {
        entry = lh_entry_next(entry);
    }
    return entry;
}

bool addMember(json_object* container, PathToken name, json_object* value) {
    return store(container, name, value, JSON_C_OBJECT_ADD_KEY_IS_NEW);
}

bool putMember(json_object* container, PathToken name, json_object* value) {
    return store(container, name, value, 0);
}

void deleteMember(json_object* container, PathToken name) {
    TerminatedName const key(name);
    if (json_object_is_type(container, json_type_object) && key.get() != nullptr) {
        json_object_object_del(container, key.get());
    }
}
