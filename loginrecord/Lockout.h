// How long an address is locked out: pure numbers, no file and no clock.
#ifndef VOBIUTILS_LOGINRECORD_LOCKOUT_H
#define VOBIUTILS_LOGINRECORD_LOCKOUT_H

#include <stdint.h>

namespace vobiutils {

// Length in minutes of the lock-out after `attempts` attempts; 0 while there is none.
unsigned int lockoutMinutes(int attempts);

// What is left at `now` of a lock-out of `length` minutes that began at `last` (both in seconds
// since the epoch). A beginning in the future, after the clock was set back, leaves all of it.
unsigned int minutesLeft(unsigned int length, uint64_t last, uint64_t now);

}  // namespace vobiutils

#endif
