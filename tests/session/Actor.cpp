// A job counts as asleep when /proc shows its thread in state S several times in a row.
#include "Actor.h"

#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

#include "Support.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
size_t const STACK_SIZE = 8 << 20;  // sanitizers have frames of their own
#else
size_t const STACK_SIZE = 128 << 10;
#endif

}  // namespace

Actor::Actor() {
    pthread_attr_t small;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, STACK_SIZE);
    EXPECT_EQ(pthread_create(&thread_, &small, run, this), 0);
    pthread_attr_destroy(&small);
}

Actor::~Actor() {
    end();
    begin(nullptr);
    pthread_join(thread_, nullptr);
}

void* Actor::run(void* actor) {
    Actor& self = *static_cast<Actor*>(actor);
    self.number_ = gettid();
    for (self.start_.acquire(); self.job_ != nullptr; self.start_.acquire()) {
        self.answer_ = self.job_();
        self.busy_ = false;
        self.busy_.notify_one();
    }
    return nullptr;
}

void Actor::begin(std::function<std::string()> job) {
    job_ = std::move(job);
    busy_ = true;
    start_.release();
}

// A thread that is about to continue may be seen asleep once.
bool Actor::sleeps() const {
    int times = 0;
    while (busy_ && times < 5) {
        std::string const status =
            TempDir::read("/proc/self/task/" + std::to_string(number_) + "/stat");
        size_t const name = status.rfind(')');
        times = name != status.npos && status.compare(name, 3, ") S") == 0 ? times + 1 : 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return times == 5;
}

std::string Actor::end() {
    busy_.wait(true);
    return answer_;
}
