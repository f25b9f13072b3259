#include "RequestThreads.h"

#include <utility>

RequestThreads::RequestThreads(unsigned int threads, std::size_t maxWaiting)
    : maxWaiting_(maxWaiting) {
    for (unsigned int i = 0; i < threads; ++i) {
        threads_.emplace_back([this] { serve(); });
    }
}

void RequestThreads::enqueue(std::function<void()> job) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return waiting_.size() < maxWaiting_; });
    waiting_.push_back(std::move(job));
    changed_.notify_all();
}

void RequestThreads::shutdown() {
    {
        std::lock_guard<std::mutex> const guard(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void RequestThreads::serve() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
        if (waiting_.empty()) {
            return;
        }
        std::function<void()> const job = std::move(waiting_.front());
        waiting_.pop_front();
        changed_.notify_all();
        lock.unlock();
        job();
        lock.lock();
    }
}
