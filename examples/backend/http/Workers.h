// Threads that do what may wait: for a lock, a disk, a password's hash.
#ifndef BACKEND_HTTP_WORKERS_H
#define BACKEND_HTTP_WORKERS_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

class Workers {
  public:
    class Job {
      public:
        virtual ~Job() = default;
        virtual void run() noexcept = 0;     // on a worker; the job may be gone when this returns
        virtual void cancel() noexcept = 0;  // in place of run() when the workers stop

      private:
        friend Workers;
        Job* next_ = nullptr;
    };

    explicit Workers(unsigned int threads);
    ~Workers() { stop(); }

    // Takes a job, without allocating. False when the workers have stopped.
    bool submit(Job& job);

    // Returns when all jobs are done or cancelled.
    void stop();

  private:
    void serve();

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isStopping_ = false;
    Job* first_ = nullptr;
    Job* last_ = nullptr;
    std::vector<std::thread> threads_;
};

#endif
