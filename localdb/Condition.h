// A condition variable whose timed waits use CLOCK_MONOTONIC, so that setting the time of day does
// not shorten or lengthen them.
#pragma once

#include <pthread.h>
#include <time.h>

namespace vobiutils {

// The time on CLOCK_MONOTONIC that many milliseconds from now.
timespec deadlineIn(unsigned int milliseconds);

bool isBefore(timespec const& one, timespec const& other);

// Has no destructor: threads may still wait on a condition with static storage while the process
// exits, so that one is never destroyed. The owner of any other calls destroy().
class Condition {
  public:
    Condition();
    void destroy() { pthread_cond_destroy(&condition_); }

    // Wakes every waiter. The caller holds the mutex that they wait with.
    void notify() { pthread_cond_broadcast(&condition_); }

    // Waits for a notification, but no longer than to the deadline, if there is one, and a tenth of
    // a second: what the caller waits for is in public fields, which a program may change without a
    // notification. So the caller tests these fields after each return. False when the deadline has
    // passed.
    bool wait(pthread_mutex_t& mutex, timespec const* deadline = nullptr);

  private:
    pthread_cond_t condition_;
};

}  // namespace vobiutils
