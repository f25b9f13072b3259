// Runs jobs on a fixed number of threads.
#include "Workers.h"

Workers::Workers(unsigned int threads) {
    for (unsigned int i = 0; i < threads; ++i) {
        threads_.emplace_back([this] { serve(); });
    }
}

void Workers::submit(Job& job) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (isStopping_) {
        lock.unlock();
        job.run(true);
        return;
    }
    (first_ == nullptr ? first_ : last_->next) = &job;
    last_ = &job;
    changed_.notify_one();
}

void Workers::stop() {
    {
        std::lock_guard<std::mutex> const guard(mutex_);
        isStopping_ = true;
    }
    changed_.notify_all();
    threads_.clear();  // joins them
}

void Workers::serve() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isStopping_ || first_ != nullptr; });
        if (first_ == nullptr) {
            return;
        }
        Job& job = *first_;
        first_ = job.next;
        bool const isStopping = isStopping_;
        lock.unlock();
        job.run(isStopping);
        lock.lock();
    }
}
