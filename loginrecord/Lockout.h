// Computes how long an address is locked out, from numbers only: no file and no clock.
#pragma once

#include <stdint.h>

#include <compare>

namespace vobiutils {

// The length in minutes of the lock-out after `attempts` attempts; 0 when there is none.
unsigned int lockoutMinutes(int attempts);

// The minutes left at `now` of a lock-out of `length` minutes that began at `last` (both in seconds
// since the epoch). A beginning in the future (the clock was set back) leaves the whole length.
unsigned int minutesLeft(unsigned int length, uint64_t last, uint64_t now);

// Of two clients, the one with the lesser standing is forgotten first.
struct Standing {
    bool isLocked = false;
    uint64_t time = 0;  // of the last attempt; or the end of the lock-out

    auto operator<=>(Standing const&) const = default;
};

Standing standingOf(int attempts, uint64_t last, uint64_t now);

}  // namespace vobiutils
