// Memory that is handed out piece by piece and released as a whole.
#pragma once

#include <stddef.h>

#include <new>
#include <string_view>
#include <type_traits>

namespace jsonschema {

class Arena {
  public:
    static constexpr size_t ALIGNMENT = 8;

    Arena() = default;

    // Uses the buffer first, which has this alignment.
    Arena(char* buffer, size_t size) : next_(buffer), left_(size) {}
    ~Arena();
    Arena(Arena const&) = delete;
    Arena& operator=(Arena const&) = delete;

    // `count` values with their defaults; null when out of memory. They are not destroyed.
    template <typename T>
    T* make(size_t count = 1) {
        static_assert(std::is_trivially_destructible_v<T>);
        size_t const size = sizeof(T);  // NOLINT(bugprone-sizeof-expression): T may be a pointer
        void* const space = count <= MOST / size ? allocate(count * size) : nullptr;
        return space != nullptr ? new (space) T[count]() : nullptr;
    }

    // A NUL-terminated copy, or null.
    char const* copy(std::string_view string);

    // Aligned for every type in use here; null when out of memory.
    void* allocate(size_t size);

  private:
    static constexpr size_t MOST = size_t{1} << 30;
    static constexpr size_t BLOCK = 1000;  // bytes of a block, unless more is asked for

    struct alignas(ALIGNMENT) Block {
        Block* previous;
    };

    Block* last_ = nullptr;
    char* next_ = nullptr;
    size_t left_ = 0;
};

}  // namespace jsonschema
