// Takes turns with other processes at the database of an API type.
//
// Ordinarily a transaction that writes holds an flock on the side file `.lock` in the folder of the
// type, from before it reads the data file until it has saved. The data file itself would not do: a
// save replaces it. The side file is empty and never removed.
//
// The lock is the process's: all its controllers share it, and only its last transaction frees it. A
// child made by fork does not have it. The kernel frees it when the process ends, however it ends.
#pragma once

#include <sys/types.h>
#include <time.h>

#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

class ProcessLock {
  public:
    ProcessLock() = default;
    ~ProcessLock() { release(); }
    ProcessLock(ProcessLock const&) = delete;
    ProcessLock& operator=(ProcessLock const&) = delete;

    // False if another process has the lock until the deadline, an instant on CLOCK_MONOTONIC. True,
    // too, where no process can have it: without a data file or permission to make the side file,
    // and on a file system without locks. Called at most once.
    bool acquire(unsigned int apiType, timespec const& deadline);

    // Frees the lock, if this is the process's last use of it.
    void release();

    ProcessLock* next = nullptr;  // in the chain of all that are held

  private:
    bool tryAcquire(unsigned int apiType);
    bool lock();
    ProcessLock const* findShared() const;

    FileDescriptor file_;  // open while the lock is held
    dev_t device_ = 0;
    ino_t inode_ = 0;
    pid_t process_ = 0;
};

}  // namespace vobiutils
