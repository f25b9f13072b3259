// Equality by structure, and the search for equal elements by hash.
//
// Comparing each element of an array with every other one takes n squared steps. Instead firstRepeated
// puts them into a table, by a hash for which equal values are equal, and compares only those with
// the same hash:
//
//     [{"a": 1}, "b", {"a": 1.0}]  ->  hashes 7, 3, 7  ->  compares {"a": 1} and {"a": 1.0}
//
// Two of the same hash are normally equal, and the first comparison ends the search. Values made to
// collide cost n squared again, which the budget bounds.
#include "jsonschema/Equality.h"

#include <string.h>

#include <memory>
#include <new>

#include "jsonschema/Hash.h"
#include "jsonschema/Json.h"
#include "jsonschema/Number.h"

namespace jsonschema {

namespace {

bool equalStrings(json_object* a, json_object* b, Budget& budget) {
    std::string_view const string = charactersOf(a);
    return budget.spend(string.size() / 16) && string == charactersOf(b);
}

bool equalArrays(json_object* a, json_object* b, Budget& budget) {
    size_t const length = lengthOf(a);
    if (length != lengthOf(b)) {
        return false;
    }
    for (size_t i = 0; i < length; ++i) {
        if (!areEqual(elementOf(a, i), elementOf(b, i), budget)) {
            return false;
        }
    }
    return true;
}

bool equalObjects(json_object* a, json_object* b, Budget& budget) {
    if (memberCount(a) != memberCount(b)) {
        return false;
    }
    for (lh_entry* member = firstMember(a); member != nullptr; member = lh_entry_next(member)) {
        if (!budget.spend(strlen(nameOf(member)) / 16)) {
            return false;
        }
        lh_entry* const other = findMember(b, nameOf(member));
        if (other == nullptr || !areEqual(valueOf(member), valueOf(other), budget)) {
            return false;
        }
    }
    return true;
}

uint64_t hashOf(json_object* value, Budget& budget);

// Adds up the hashes of the members, because their order does not count. Of a name the length and
// the first character are enough: objects that differ by their names alone are rare in one array.
uint64_t hashOfMembers(json_object* object, Budget& budget) {
    uint64_t hash = 2;
    for (lh_entry* at = firstMember(object); at != nullptr; at = lh_entry_next(at)) {
        std::string_view const name = nameOf(at);
        budget.spend(name.size() / 16);
        uint64_t const first = name.empty() ? 0 : static_cast<unsigned char>(name[0]);
        hash += mix(name.size() << 8 | first, hashOf(valueOf(at), budget));
    }
    return hash;
}

uint64_t hashOfElements(json_object* array, Budget& budget) {
    uint64_t hash = 3;
    size_t const length = lengthOf(array);
    for (size_t i = 0; i < length; ++i) {
        hash = mix(hash, hashOf(elementOf(array, i), budget));
    }
    return hash;
}

uint64_t hashOf(json_object* value, Budget& budget) {
    Budget::Level const level(budget);
    if (!budget.spend(1)) {
        return 0;
    }
    switch (json_object_get_type(value)) {
        case json_type_null: return 4;
        case json_type_boolean: return json_object_get_boolean(value) ? 5 : 6;
        case json_type_int:
        case json_type_double: return mix(1, Number(value).hash());
        case json_type_string:
            budget.spend(static_cast<size_t>(json_object_get_string_len(value)) / 16);
            return hashOfBytes(charactersOf(value));
        case json_type_array: return hashOfElements(value, budget);
        case json_type_object: return hashOfMembers(value, budget);
    }
    return 0;
}

struct Hashed {
    uint64_t hash;
    json_object* value;
    bool isUsed;
};

// The elements seen so far, in the slot of their hash or the next free one.
class Seen {
  public:
    explicit Seen(size_t count) {
        while (slots_ < 2 * count) {
            slots_ *= 2;
        }
        elements_.reset(new (std::nothrow) Hashed[slots_]());
    }

    bool hasMemory() const { return elements_ != nullptr; }

    // False when it equals one of them.
    bool add(Hashed const& element, Budget& budget) {
        size_t slot = slotOf(element.hash, slots_ - 1);
        for (; elements_[slot].isUsed; slot = (slot + 1) & (slots_ - 1)) {
            Hashed const& other = elements_[slot];
            if (!budget.spend(1) ||
                (other.hash == element.hash && areEqual(other.value, element.value, budget))) {
                return false;
            }
        }
        elements_[slot] = element;
        return true;
    }

  private:
    size_t slots_ = 4;
    std::unique_ptr<Hashed[]> elements_;
};

}  // namespace

bool areEqual(json_object* a, json_object* b, Budget& budget) {
    Budget::Level const level(budget);
    if (!budget.spend(1)) {
        return false;
    }
    json_type const type = json_object_get_type(a);
    json_type const otherType = json_object_get_type(b);
    if (isNumber(type) && isNumber(otherType)) {
        return Number(a).compare(Number(b)) == Number::EQUAL;
    }
    if (type != otherType) {
        return false;
    }
    switch (type) {
        case json_type_boolean: return json_object_get_boolean(a) == json_object_get_boolean(b);
        case json_type_string: return equalStrings(a, b, budget);
        case json_type_array: return equalArrays(a, b, budget);
        case json_type_object: return equalObjects(a, b, budget);
        default: return true;  // null
    }
}

size_t firstRepeated(json_object* array, Budget& budget) {
    size_t const length = lengthOf(array);
    if (!budget.spend(4 * length)) {
        return 0;
    }
    Seen seen(length);
    if (!seen.hasMemory()) {
        budget.giveUp();
        return 0;
    }
    size_t i = 0;
    for (; i < length; ++i) {
        json_object* const element = elementOf(array, i);
        if (!seen.add({hashOf(element, budget), element, true}, budget)) {
            break;
        }
    }
    return i;
}

}  // namespace jsonschema
