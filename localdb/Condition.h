// A condition variable whose timed waits use CLOCK_MONOTONIC, so that setting the time of day does not
// shorten or lengthen them.
#ifndef VOBIUTILS_LOCALDB_CONDITION_H
#define VOBIUTILS_LOCALDB_CONDITION_H

#include <pthread.h>
#include <time.h>

namespace vobiutils {

// The instant so many milliseconds from now, on CLOCK_MONOTONIC.
timespec deadlineIn(unsigned int milliseconds);

// Has no destructor: the conditions with static storage are never destroyed, as threads may still wait on
// them while the process exits.
class Condition {
  public:
    Condition();
    void destroy() { pthread_cond_destroy(&condition_); }

    // Wakes every waiter. The caller holds the mutex that they wait with.
    void notify() { pthread_cond_broadcast(&condition_); }

    // Waits for a notification, until the deadline if there is one, and a tenth of a second at most: what
    // the caller waits for is in public fields, which a program may change without any notification. False
    // when the deadline has passed.
    bool wait(pthread_mutex_t& mutex, timespec const* deadline = nullptr);

  private:
    pthread_cond_t condition_;
};

}  // namespace vobiutils

#endif
