// The arithmetic of the lock-out.
#include "loginrecord/Lockout.h"

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

}  // namespace vobiutils
