// Hashes of strings and of sequences of hashes, for tables that live in memory only: they differ
// between machines.
#pragma once

#include <stdint.h>
#include <string.h>

#include <string_view>

namespace jsonschema {

uint64_t const MULTIPLIER = 0x9E3779B97F4A7C15U;

inline uint64_t mix(uint64_t hash, uint64_t value) {
    hash = (hash ^ value) * MULTIPLIER;
    return hash ^ (hash >> 29);
}

// The slot in a table, whose size less one is `mask`. A value that differs in its highest bits only,
// as doubles do, has a hash that differs above bit 18: multiplying again takes that to the middle.
inline size_t slotOf(uint64_t hash, size_t mask) {
    return static_cast<size_t>((hash * MULTIPLIER) >> 32) & mask;
}

// Reads eight bytes at a time, or four: the last ones overlap those before them.
inline uint64_t hashOfBytes(std::string_view bytes) {
    size_t const size = bytes.size();
    char const* const start = bytes.data();
    uint64_t hash = size;
    uint64_t word = 0;
    if (size >= sizeof word) {
        char const* const last = start + size - sizeof word;
        for (char const* at = start; at < last; at += sizeof word) {
            memcpy(&word, at, sizeof word);
            hash = mix(hash, word);
        }
        memcpy(&word, last, sizeof word);
    } else if (size >= sizeof(uint32_t)) {
        uint32_t half[2];
        memcpy(&half[0], start, sizeof half[0]);
        memcpy(&half[1], start + size - sizeof half[1], sizeof half[1]);
        word = uint64_t{half[0]} << 32 | half[1];
    } else if (size > 0) {
        unsigned char const bytesOfWord[] = {static_cast<unsigned char>(start[0]),
                                             static_cast<unsigned char>(start[size / 2]),
                                             static_cast<unsigned char>(start[size - 1])};
        memcpy(&word, bytesOfWord, sizeof bytesOfWord);
    }
    return mix(hash, word);
}

}  // namespace jsonschema
