// Threads that do what may wait: for a lock, a disk, a password's hash.
#ifndef BACKEND_HTTP_WORKERS_H
#define BACKEND_HTTP_WORKERS_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

class Workers {
  public:
    struct Job {
        virtual ~Job() = default;

        // On a worker; when that is stopping, only to give up. The job may be gone when this returns.
        virtual void run(bool isStopping) noexcept = 0;

        Job* next = nullptr;
    };

    explicit Workers(unsigned int threads);
    ~Workers() { stop(); }

    void submit(Job& job);  // does not allocate; after stop() the job is told so at once
    void stop();            // returns when all jobs have run

  private:
    void serve();

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isStopping_ = false;
    Job* first_ = nullptr;
    Job* last_ = nullptr;
    std::vector<std::jthread> threads_;
};

#endif
