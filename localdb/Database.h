// The database of one API type in one controller: loads, saves and drops its document.
#pragma once

#include <stdint.h>

#include <atomic>

#include "CompiledSchema.h"
#include "LocalDbCtrl.h"
#include "localdb/DocumentOrigin.h"

namespace vobiutils {

// Refers to fields of a controller, which must outlive it; copies refer to the same database.
//
// The document belongs to the thread that holds the mutex, and while the state is "writing" to the
// thread that set this state (DatabaseLock.h). Only that thread calls the functions that use it.
class Database {
  public:
    // `origins` is what is known of the controller's documents, or null.
    Database(LOCALDB_HANDLER& owner, unsigned int type, Origins* origins)
        : controller(owner),
          apiType(type),
          mutex(owner.lock[type]),
          document_(owner.dbObject[type]),
          state_(owner.state[type]),
          origins_(origins) {}

    // The database of another API type in the same controller.
    Database sibling(unsigned int type) const { return Database(controller, type, origins_); }

    LOCALDB_HANDLER& controller;
    unsigned int const apiType;
    pthread_mutex_t& mutex;

    // Threads that do not hold the mutex read the state too, so every access is atomic.
    int state() const { return state_.load(std::memory_order_acquire); }
    void setState(int state) { state_.store(state, std::memory_order_release); }

    // The state of a database that no thread is writing: accessible if its document is in memory,
    // else uninitialized.
    int idleState() const {
        return document_ != nullptr ? DB_STATE_ACCESSIBLE : DB_STATE_UNINITIALIZED;
    }

    // Null if no document is in memory. The controller owns it.
    TreeMapObject* document() const { return document_; }

    // Whether a document is in memory and has a value: a data file that is not JSON gives one
    // without.
    bool hasValue() const;

    // What the document was read from; null if it may have been changed since, or put there by the
    // program itself.
    Origin const* origin() const;

    // Forgets where the document is from, as it may be changed from now on.
    void forgetOrigin();

    // Puts `copy`, which it takes over, in place of the document's value. The handle stays: the
    // program may have the pointer from an earlier lock. `version` is that of the content that the
    // copy is equal to, or 0.
    void restore(json_object* copy, uint64_t version);

    // Reads the data file into the document, which is null if there is no file, and finishes a
    // change before that; a file that is part of one that cannot be finished counts as unreadable.
    // Does not change the state. `function` and `number` go into the log lines: the public function
    // that needs the document, and the number that its line reports for the API type. Sets
    // `version` to that of the bytes that were read (FileBytes.h), 0 if the document has no value.
    // False, with no document, when out of memory.
    bool load(char const* function, int number, uint64_t& version);

    // Sets `node` to a new handle on the node at a path that is not empty, or to null if there is
    // no such node. False, with `node` unchanged, when out of memory.
    bool tryGet(char const* path, TreeMapObject*& node) const;

    // Whether the document satisfies the schema of the data file, or has none. If not, `fault` says
    // why.
    bool isValid(CompiledSchema::Fault& fault) const;

    // Whether the file holds other bytes than when it was last read for a document of this database;
    // false if that is not known. Finishes a change before that.
    bool isFileAnother() const;

    // Writes the document to its data file and drops it, even if the write failed: the next lock
    // reads the file as it is then. Returns 0 if it was written, with the version of the content in
    // `version`; else 2. Does not change the state.
    int save(uint64_t& version);

    // Deletes the document, if there is one. Does not change the state.
    void drop();

  private:
    uint64_t remember(std::unique_ptr<FileContent> content);

    TreeMapObject*& document_;
    std::atomic_ref<int> state_;
    Origins* const origins_;
};

}  // namespace vobiutils
