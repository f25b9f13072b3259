// A thread that does one thing after another, with a stack as small as a request thread's.
#ifndef VOBIUTILS_TESTS_ACTOR_H
#define VOBIUTILS_TESTS_ACTOR_H

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

    // Returns when the job has ended or sleeps, in the tests on a mutex, a condition or a pipe: whether
    // it sleeps.
    bool sleeps() const;

    // Returns when the job has ended: what it gave.
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

#endif
