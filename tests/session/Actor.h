// A thread that runs jobs one at a time, on a stack as small as a request thread's.
#pragma once

#include <pthread.h>

#include <atomic>
#include <functional>
#include <semaphore>
#include <string>

class Actor {
  public:
    Actor();
    ~Actor();
    Actor(Actor const&) = delete;
    Actor& operator=(Actor const&) = delete;

    void begin(std::function<std::string()> job);

    // Waits until the job has ended or sleeps (on a mutex, a condition variable or a pipe). Returns
    // whether it sleeps.
    bool sleeps() const;

    // Waits until the job has ended, and returns its result.
    std::string end();

  private:
    static void* run(void* actor);

    std::function<std::string()> job_;
    std::string answer_;
    std::atomic<bool> busy_ = false;
    std::atomic<pid_t> number_ = 0;
    std::binary_semaphore start_{0};
    pthread_t thread_ = {};
};
