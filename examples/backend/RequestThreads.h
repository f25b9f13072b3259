// The threads that serve the connections of one port. When all of them are busy and enough
// connections wait, no further one is accepted until there is room.
#ifndef BACKEND_REQUESTTHREADS_H
#define BACKEND_REQUESTTHREADS_H

#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

class RequestThreads : public httplib::TaskQueue {
  public:
    RequestThreads(unsigned int threads, std::size_t maxWaiting);

    void enqueue(std::function<void()> job) override;  // waits for room
    void shutdown() override;                          // does what waits, and ends the threads

  private:
    void serve();

    std::size_t const maxWaiting_;
    bool stopping_ = false;
    std::deque<std::function<void()>> waiting_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::thread> threads_;
};

#endif
