// The schemas of a map such as "properties", in the order of the document, and found by name.
#pragma once

#include <stdint.h>

#include <string_view>

#include "jsonschema/Arena.h"
#include "jsonschema/Budget.h"

namespace jsonschema {

class Pattern;
struct Node;

class NameMap {
  public:
    struct Entry {
        std::string_view name;
        Node const* schema = nullptr;
        Pattern const* pattern = nullptr;  // in a map of patterns
        bool isRequired = false;
    };

    // Makes room for `capacity` entries. False when out of memory.
    bool reserve(size_t capacity, Arena& arena);

    // Adds an entry, whose name is different from all others, and must stay where it is.
    void add(Entry const& entry, Budget& budget);

    // Null when there is none. Names may be made to collide: each collision is charged.
    Entry const* find(std::string_view name, Budget& budget) const;

    // Marks the entries of names as required. False when one of them has no entry.
    bool requireAll(std::string_view const* names, size_t count, Budget& budget);
    size_t requiredCount() const { return requiredCount_; }

    // The same, for one name after another: most come in the order of the entries.
    class Search {
      public:
        explicit Search(NameMap const& map) : map_(map), next_(map.begin()) {}

        Entry const* find(std::string_view name, Budget& budget) {
            if (next_ == map_.end() || next_->name != name) {
                Entry const* const found = map_.find(name, budget);
                next_ = found != nullptr ? found + 1 : next_;
                return found;
            }
            return next_++;
        }

      private:
        NameMap const& map_;
        Entry const* next_;
    };

    Entry const* begin() const { return entries_; }
    Entry const* end() const { return entries_ + count_; }

  private:
    Entry* entries_ = nullptr;
    uint32_t count_ = 0;
    uint32_t requiredCount_ = 0;
    uint32_t mask_ = 0;  // the number of slots less one, all ones in binary
    uint32_t* slots_ =
        nullptr;  // one plus the index of an entry, or 0; at least half of them are 0
};

}  // namespace jsonschema
