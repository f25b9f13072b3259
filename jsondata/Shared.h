// Shares what any number of threads only read: the last owner deletes it.
#pragma once

#include <assert.h>

#include <atomic>

namespace vobiutils {

// The base of what is shared. Begins with one owner.
struct Counted {
    std::atomic<unsigned int> owners = 1;
};

template <typename T>
T* addOwner(T* shared) {
    if (shared != nullptr) {
        assert(shared->owners > 0);
        shared->owners.fetch_add(1, std::memory_order_relaxed);
    }
    return shared;
}

template <typename T>
void removeOwner(T* shared) {
    if (shared != nullptr && shared->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete shared;
    }
}

// Owns a share; null if there is nothing.
template <typename T>
class Shared {
  public:
    Shared() = default;
    // Takes over a share that the caller owns.
    explicit Shared(T* owned) : shared_(owned) {}
    ~Shared() { removeOwner(shared_); }
    Shared(Shared const& other) : shared_(addOwner(other.shared_)) {}
    Shared& operator=(Shared const& other) {
        if (this != &other) {
            removeOwner(shared_);
            shared_ = addOwner(other.shared_);
        }
        return *this;
    }

    T* get() const { return shared_; }
    T* operator->() const { return shared_; }
    explicit operator bool() const { return shared_ != nullptr; }

    // Gives the share away.
    T* release() {
        T* const shared = shared_;
        shared_ = nullptr;
        return shared;
    }

  private:
    T* shared_ = nullptr;
};

}  // namespace vobiutils
