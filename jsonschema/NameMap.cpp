// A table of member names that is filled once and only searched afterwards.
#include "jsonschema/NameMap.h"

#include <assert.h>

#include "jsonschema/Hash.h"

namespace jsonschema {

bool NameMap::reserve(size_t capacity, Arena& arena) {
    size_t slots = 4;
    while (slots < 2 * capacity) {
        slots *= 2;
    }
    mask_ = static_cast<uint32_t>(slots - 1);
    entries_ = arena.make<Entry>(capacity);
    slots_ = arena.make<uint32_t>(slots);
    return entries_ != nullptr && slots_ != nullptr;
}

void NameMap::add(Entry const& entry, Budget& budget) {
    assert(2 * count_ < mask_);  // every search comes to a free slot
    size_t slot = slotOf(hashOfBytes(entry.name), mask_);
    while (slots_[slot] != 0 && budget.spend(1)) {
        slot = (slot + 1) & mask_;
    }
    entries_[count_] = entry;
    slots_[slot] = ++count_;
}

NameMap::Entry const* NameMap::find(std::string_view name, Budget& budget) const {
    size_t slot = slotOf(hashOfBytes(name), mask_);
    while (slots_[slot] != 0) {
        assert(slots_[slot] <= count_);
        Entry const& entry = entries_[slots_[slot] - 1];
        if (entry.name == name) {
            return &entry;
        }
        if (!budget.spend(1 + name.size() / 16)) {
            return nullptr;
        }
        slot = (slot + 1) & mask_;
    }
    return nullptr;
}

bool NameMap::requireAll(std::string_view const* names, size_t count, Budget& budget) {
    bool all = true;
    for (size_t i = 0; i < count; ++i) {
        Entry const* const found = find(names[i], budget);
        all = all && found != nullptr;
        if (found != nullptr && !found->isRequired) {
            entries_[found - entries_].isRequired = true;
            ++requiredCount_;
        }
    }
    return all;
}

}  // namespace jsonschema
