// Timed waits on CLOCK_MONOTONIC.
#include "localdb/Condition.h"

#include <errno.h>

namespace vobiutils {

namespace {

unsigned int const LONGEST_SLEEP_MS = 100;

}  // namespace

bool isBefore(timespec const& one, timespec const& other) {
    return one.tv_sec != other.tv_sec ? one.tv_sec < other.tv_sec : one.tv_nsec < other.tv_nsec;
}

timespec deadlineIn(unsigned int milliseconds) {
    timespec deadline = {0, 0};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += static_cast<time_t>(milliseconds / 1000U);
    deadline.tv_nsec += static_cast<long>(milliseconds % 1000U) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        deadline.tv_nsec -= 1000000000L;
        ++deadline.tv_sec;
    }
    return deadline;
}

Condition::Condition() {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&condition_, &attributes);
    pthread_condattr_destroy(&attributes);
}

bool Condition::wait(pthread_mutex_t& mutex, timespec const* deadline) {
    timespec const nextLook = deadlineIn(LONGEST_SLEEP_MS);
    bool const endsHere = deadline != nullptr && isBefore(*deadline, nextLook);
    bool const timedOut =
        pthread_cond_timedwait(&condition_, &mutex, endsHere ? deadline : &nextLook) == ETIMEDOUT;
    return !(timedOut && endsHere);
}

}  // namespace vobiutils
