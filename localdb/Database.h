// One API type of one controller, as the database's own code works on it.
#ifndef VOBIUTILS_LOCALDB_DATABASE_H
#define VOBIUTILS_LOCALDB_DATABASE_H

#include <atomic>

#include "LocalDbCtrl.h"

namespace vobiutils {

// The state word is read and written by threads that do not hold the mutex, so always atomically.
class Database {
  public:
    Database(LOCALDB_HANDLER& owner, unsigned int type)
        : controller(owner),
          apiType(type),
          document(owner.dbObject[type]),
          mutex(owner.lock[type]),
          state_(owner.state[type]) {}

    LOCALDB_HANDLER& controller;
    unsigned int const apiType;
    TreeMapObject*& document;
    pthread_mutex_t& mutex;

    int state() const { return state_.load(std::memory_order_acquire); }
    void setState(int state) { state_.store(state, std::memory_order_release); }

    // Reads the type's data file into `document`, which is null when there is none; the state stays. Logs
    // under the name of the public function that wants it; `number` is what its line calls the type.
    void load(char const* function, int number);

    // As load, and as the document's get. False, with nothing changed, when memory ran out.
    bool tryLoad(char const* function, int number);
    bool tryGet(char const* path, TreeMapObject*& node) const;

  private:
    std::atomic_ref<int> state_;
};

}  // namespace vobiutils

#endif
