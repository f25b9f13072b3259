// An owned file descriptor, and the system calls on it, repeated when a signal interrupts them.
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <sys/file.h>
#include <sys/types.h>
#include <unistd.h>

namespace vobiutils {

class FileDescriptor {
  public:
    FileDescriptor() = default;
    FileDescriptor(char const* name, int flags, mode_t mode = 0) { open(name, flags, mode); }
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor const&) = delete;
    FileDescriptor& operator=(FileDescriptor const&) = delete;

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

    // These return false with errno.
    bool open(char const* name, int flags, mode_t mode = 0);
    // A second descriptor of the same open file, with the same lock.
    bool duplicate(FileDescriptor const& other);
    // False when what was written may not have reached the file.
    bool close();

    ssize_t read(void* bytes, size_t size) const;
    // Reads until the buffer is full or the file ends. -1 with errno on failure.
    ssize_t readFully(char* bytes, size_t size) const;
    bool seek(off_t offset) const { return lseek(fd_, offset, SEEK_SET) == offset; }
    bool resize(off_t length) const;
    bool writeAll(char const* bytes, size_t length) const;
    bool sync() const;
    // Blocks until this call has the file's lock. True also on a system that has no such locks.
    bool lock() const { return lock(LOCK_EX); }
    // False, with EWOULDBLOCK, where that would have to wait.
    bool tryLock() const { return lock(LOCK_EX | LOCK_NB); }
    // Explicit, because a child forked in the meantime shares the descriptor and would keep the
    // lock.
    void unlock() const { flock(fd_, LOCK_UN); }

  private:
    bool lock(int operation) const;

    int fd_ = -1;
};

}  // namespace vobiutils
