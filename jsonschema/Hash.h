// Hashes of strings and of sequences of hashes, for tables that live in memory only: they differ
// between machines.
#ifndef JSONSCHEMA_HASH_H
#define JSONSCHEMA_HASH_H

#include <stdint.h>
#include <string.h>

#include <string_view>

namespace jsonschema {

inline uint64_t mix(uint64_t hash, uint64_t value) {
    hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 29);
}

// Reads eight bytes at a time; the last eight overlap those before them.
inline uint64_t hashOfBytes(std::string_view bytes) {
    uint64_t hash = bytes.size();
    uint64_t word = 0;
    if (bytes.size() < sizeof word) {
        for (char c : bytes) {
            word = word << 8 | static_cast<unsigned char>(c);
        }
        return mix(hash, word);
    }
    char const* const last = bytes.data() + bytes.size() - sizeof word;
    for (char const* at = bytes.data(); at < last; at += sizeof word) {
        memcpy(&word, at, sizeof word);
        hash = mix(hash, word);
    }
    memcpy(&word, last, sizeof word);
    return mix(hash, word);
}

}  // namespace jsonschema

#endif
