// Equality by structure, and the search for equal elements by hash.
//
// Comparing each element of an array with every other one takes n squared steps. Instead areUnique
// sorts the elements by a hash for which equal values are equal, and compares only within a group
// of equal hashes:
//
//     [{"a": 1}, "b", {"a": 1.0}]  ->  hashes 7, 3, 7  ->  3: "b" | 7: {"a": 1}, {"a": 1.0}
//
// A group with more than one element normally holds a duplicate, and the first comparison ends the
// search. Values made to collide cost n squared again, which the budget bounds.
#include "jsonschema/Equality.h"

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <memory>
#include <new>

#include "jsonschema/Number.h"

namespace jsonschema {

namespace {

bool isNumber(json_type type) { return type == json_type_int || type == json_type_double; }

size_t lengthOf(json_object* string) {
    return static_cast<size_t>(json_object_get_string_len(string));
}

bool equalStrings(json_object* a, json_object* b, Budget& budget) {
    size_t const length = lengthOf(a);
    return length == lengthOf(b) && budget.spend(length / 16) &&
           memcmp(json_object_get_string(a), json_object_get_string(b), length) == 0;
}

bool equalArrays(json_object* a, json_object* b, Budget& budget) {
    size_t const length = json_object_array_length(a);
    if (length != json_object_array_length(b)) {
        return false;
    }
    for (size_t i = 0; i < length; ++i) {
        if (!areEqual(json_object_array_get_idx(a, i), json_object_array_get_idx(b, i), budget)) {
            return false;
        }
    }
    return true;
}

bool equalObjects(json_object* a, json_object* b, Budget& budget) {
    if (json_object_object_length(a) != json_object_object_length(b)) {
        return false;
    }
    lh_entry* entry = nullptr;
    lh_foreach(json_object_get_object(a), entry) {
        char const* const name = static_cast<char const*>(lh_entry_k(entry));
        json_object* other = nullptr;
        if (!budget.spend(strlen(name) / 16) || !json_object_object_get_ex(b, name, &other) ||
            !areEqual(static_cast<json_object*>(lh_entry_v(entry)), other, budget)) {
            return false;
        }
    }
    return true;
}

uint64_t mix(uint64_t hash, uint64_t value) {
    hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 29);
}

uint64_t hashOfBytes(char const* bytes, size_t length) {
    uint64_t hash = length;
    for (size_t i = 0; i < length; ++i) {
        hash = mix(hash, static_cast<unsigned char>(bytes[i]));
    }
    return hash;
}

uint64_t hashOf(json_object* value, Budget& budget);

// Adds up the hashes of the members, because their order does not count.
uint64_t hashOfMembers(json_object* object, Budget& budget) {
    uint64_t hash = 2;
    lh_entry* entry = nullptr;
    lh_foreach(json_object_get_object(object), entry) {
        char const* const name = static_cast<char const*>(lh_entry_k(entry));
        budget.spend(strlen(name) / 16);
        hash += mix(hashOfBytes(name, strlen(name)),
                    hashOf(static_cast<json_object*>(lh_entry_v(entry)), budget));
    }
    return hash;
}

uint64_t hashOfElements(json_object* array, Budget& budget) {
    uint64_t hash = 3;
    size_t const length = json_object_array_length(array);
    for (size_t i = 0; i < length; ++i) {
        hash = mix(hash, hashOf(json_object_array_get_idx(array, i), budget));
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
            budget.spend(lengthOf(value) / 16);
            return hashOfBytes(json_object_get_string(value), lengthOf(value));
        case json_type_array: return hashOfElements(value, budget);
        case json_type_object: return hashOfMembers(value, budget);
    }
    return 0;
}

struct Hashed {
    uint64_t hash;
    json_object* value;
};

// Whether the elements [first, last), which have the same hash, all differ.
bool differ(Hashed const* first, Hashed const* last, Budget& budget) {
    for (Hashed const* a = first; a != last; ++a) {
        for (Hashed const* b = a + 1; b != last; ++b) {
            if (areEqual(a->value, b->value, budget) || budget.isUndecided()) {
                return false;
            }
        }
    }
    return true;
}

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

bool areUnique(json_object* array, Budget& budget) {
    size_t const length = json_object_array_length(array);
    if (!budget.spend(4 * length)) {
        return false;
    }
    std::unique_ptr<Hashed[]> const elements(new (std::nothrow) Hashed[length]);
    if (elements == nullptr) {
        budget.giveUp();
        return false;
    }
    for (size_t i = 0; i < length; ++i) {
        json_object* const element = json_object_array_get_idx(array, i);
        elements[i] = {hashOf(element, budget), element};
    }
    Hashed* const end = elements.get() + length;
    std::sort(elements.get(), end,
              [](Hashed const& a, Hashed const& b) { return a.hash < b.hash; });
    for (Hashed const* first = elements.get(); first != end && !budget.isUndecided();) {
        Hashed const* last = first;
        while (last != end && last->hash == first->hash) {
            ++last;
        }
        if (!differ(first, last, budget)) {
            return false;
        }
        first = last;
    }
    return true;
}

}  // namespace jsonschema
