// The arithmetic of the lock-out.
#include "loginrecord/Lockout.h"

#include <algorithm>

namespace vobiutils {

namespace {

int const FIRST_LOCKED_ATTEMPT = 10;  // locks for 1 minute; each further attempt adds 2

}  // namespace

unsigned int lockoutMinutes(int attempts) {
    if (attempts < FIRST_LOCKED_ATTEMPT) {
        return 0;
    }
    return 2U * static_cast<unsigned int>(attempts) - 19U;
}

unsigned int minutesLeft(unsigned int length, uint64_t last, uint64_t now) {
    if (last >= now) {
        return length;
    }
    uint64_t const elapsed = (now - last) / 60U;
    return elapsed < length ? length - static_cast<unsigned int>(elapsed) : 0U;
}

Standing standingOf(int attempts, uint64_t last, uint64_t now) {
    unsigned int const length = lockoutMinutes(attempts);
    if (minutesLeft(length, last, now) == 0) {
        return {false, last};
    }
    return {true, last + std::min(uint64_t{length} * 60U, UINT64_MAX - last)};
}

}  // namespace vobiutils
