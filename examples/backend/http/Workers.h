// Threads that make replies, which may wait: for a lock, a disk, a password's hash.
#ifndef BACKEND_HTTP_WORKERS_H
#define BACKEND_HTTP_WORKERS_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "Exchange.h"

class Workers {
  public:
    Workers();
    ~Workers() { stop(); }

    // Has the reply made; after stop() only one that says so. Does not allocate. The exchange may be gone when this
    // returns.
    void submit(Exchange& exchange);

    void stop();  // returns when all have their reply

  private:
    void serve();

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isStopping_ = false;
    Exchange* first_ = nullptr;
    Exchange* last_ = nullptr;
    std::vector<std::jthread> threads_;
};

#endif
