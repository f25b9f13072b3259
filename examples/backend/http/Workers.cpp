#include "Workers.h"

Workers::Workers(unsigned int threads) {
    for (unsigned int i = 0; i < threads; ++i) {
        threads_.emplace_back([this] { serve(); });
    }
}

bool Workers::submit(Job& job) {
    std::lock_guard<std::mutex> const guard(mutex_);
    if (isStopping_) {
        return false;
    }
    (first_ == nullptr ? first_ : last_->next_) = &job;
    last_ = &job;
    changed_.notify_one();
    return true;
}

void Workers::stop() {
    {
        std::lock_guard<std::mutex> const guard(mutex_);
        isStopping_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
    threads_.clear();
}

void Workers::serve() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isStopping_ || first_ != nullptr; });
        if (first_ == nullptr) {
            return;
        }
        Job& job = *first_;
        first_ = job.next_;
        bool const isCancelled = isStopping_;
        lock.unlock();
        isCancelled ? job.cancel() : job.run();
        lock.lock();
    }
}
