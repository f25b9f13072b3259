// Locks a POSIX mutex for the duration of a scope.
#pragma once

#include <pthread.h>

namespace vobiutils {

class MutexGuard {
  public:
    explicit MutexGuard(pthread_mutex_t& mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_); }
    ~MutexGuard() { pthread_mutex_unlock(&mutex_); }
    MutexGuard(MutexGuard const&) = delete;
    MutexGuard& operator=(MutexGuard const&) = delete;

  private:
    pthread_mutex_t& mutex_;
};

}  // namespace vobiutils
