#include "JsonMember.h"

#include <stdlib.h>
#include <string.h>

namespace {

// The name as json-c wants it. On the stack where it fits.
class TerminatedName {
  public:
    static size_t const STACK_LENGTH = 127;

    explicit TerminatedName(std::string_view name)
        : text_(name.size() <= STACK_LENGTH ? small_
                                            : static_cast<char*>(malloc(name.size() + 1))) {
        if (text_ != nullptr) {
            if (!name.empty()) {
                memcpy(text_, name.data(), name.size());
            }
            text_[name.size()] = '\0';
        }
    }
    ~TerminatedName() {
        if (text_ != small_) {
            free(text_);
        }
    }
    TerminatedName(TerminatedName const&) = delete;
    TerminatedName& operator=(TerminatedName const&) = delete;

    char const* get() const { return text_; }  // null when there was no memory

  private:
    char small_[STACK_LENGTH + 1];
    char* text_;
};

bool namesEqual(char const* key, std::string_view name) {
    return strncmp(key, name.data(), name.size()) == 0 && key[name.size()] == '\0';
}

bool scanMembers(lh_table* members, std::string_view name, json_object*& value) {
    lh_entry* entry = nullptr;
    lh_foreach(members, entry) {
        if (namesEqual(static_cast<char const*>(lh_entry_k(entry)), name)) {
            value = static_cast<json_object*>(lh_entry_v(entry));
            return true;
        }
    }
    return false;
}

lh_table* membersOf(json_object* container) {
    return json_object_is_type(container, json_type_object) ? json_object_get_object(container)
                                                            : nullptr;
}

}  // namespace

bool findMember(json_object* container, std::string_view name, json_object*& value) {
    // Comparing a few names costs less than copying and hashing one. A very long name is not worth
    // a heap block either.
    int const scanLimit = 10;
    lh_table* const members = membersOf(container);
    if (members == nullptr) {
        return false;
    }
    if (lh_table_length(members) <= scanLimit || name.size() > TerminatedName::STACK_LENGTH) {
        return scanMembers(members, name, value);
    }
    TerminatedName const key(name);
    return json_object_object_get_ex(container, key.get(), &value) != 0;
}

bool addMember(json_object* container, std::string_view name, json_object* value) {
    TerminatedName const key(name);
    return membersOf(container) != nullptr && key.get() != nullptr &&
           json_object_object_add(container, key.get(), value) == 0;
}

void deleteMember(json_object* container, std::string_view name) {
    TerminatedName const key(name);
    if (membersOf(container) != nullptr && key.get() != nullptr) {
        json_object_object_del(container, key.get());
    }
}
