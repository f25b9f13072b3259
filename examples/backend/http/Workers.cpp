// Makes replies on a fixed number of threads.
#include "Exchange.h"
#include "Limits.h"

Workers::Workers() {
    for (unsigned int i = 0; i < WORKERS; ++i) {
        threads_.emplace_back([this] { serve(); });
    }
}

void Workers::submit(Exchange& exchange) {
    exchange.suspend();
    std::unique_lock<std::mutex> lock(mutex_);
    if (isStopping_) {
        lock.unlock();
        exchange.answer(true);
        return;
    }
    (first_ == nullptr ? first_ : last_->next) = &exchange;
    last_ = &exchange;
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
        Exchange& exchange = *first_;
        first_ = exchange.next;
        bool const isStopping = isStopping_;
        lock.unlock();
        exchange.answer(isStopping);
        lock.lock();
    }
}
