// An owned file descriptor, and the system calls on it, repeated when a signal interrupts them.
#ifndef VOBIUTILS_JSONDATA_FILES_FILEDESCRIPTOR_H
#define VOBIUTILS_JSONDATA_FILES_FILEDESCRIPTOR_H

#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <sys/file.h>
#include <sys/types.h>
#include <unistd.h>

namespace vobiutils {

// The result of `call`, repeated as long as a signal interrupts it.
template <typename Call>
auto untilUninterrupted(Call call) -> decltype(call()) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

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
    bool open(char const* name, int flags, mode_t mode = 0) {
        return adopt([=] { return ::open(name, flags | O_CLOEXEC, mode); });
    }
    // A second descriptor of the same open file, with the same lock.
    bool duplicate(FileDescriptor const& other) {
        return adopt([&] { return fcntl(other.fd_, F_DUPFD_CLOEXEC, 0); });
    }
    // False when what was written may not have reached the file.
    bool close() {
        int const fd = fd_;
        fd_ = -1;
        return fd < 0 || ::close(fd) == 0;
    }

    ssize_t read(void* bytes, size_t size) const {
        return untilUninterrupted([=, this] { return ::read(fd_, bytes, size); });
    }
    // Reads until the buffer is full or the file ends. -1 with errno on failure.
    ssize_t readFully(char* bytes, size_t size) const {
        size_t used = 0;
        ssize_t count = 1;
        while (used < size && count > 0) {
            count = read(bytes + used, size - used);
            used += count > 0 ? static_cast<size_t>(count) : 0;
        }
        return count < 0 ? -1 : static_cast<ssize_t>(used);
    }
    bool seek(off_t offset) const { return lseek(fd_, offset, SEEK_SET) == offset; }
    bool resize(off_t length) const {
        return untilUninterrupted([=, this] { return ftruncate(fd_, length); }) == 0;
    }
    bool writeAll(char const* bytes, size_t length) const {
        while (length > 0) {
            ssize_t const count =
                untilUninterrupted([=, this] { return ::write(fd_, bytes, length); });
            if (count <= 0) {
                return false;
            }
            bytes += count;
            length -= static_cast<size_t>(count);
        }
        return true;
    }
    bool sync() const {
        return untilUninterrupted([this] { return fsync(fd_); }) == 0;
    }
    // Blocks until this call has the file's lock. True also on a system that has no such locks.
    bool lock() const { return lock(LOCK_EX); }
    // False, with EWOULDBLOCK, where that would have to wait.
    bool tryLock() const { return lock(LOCK_EX | LOCK_NB); }
    // Explicit, because a child forked in the meantime shares the descriptor and would keep the
    // lock.
    void unlock() const { flock(fd_, LOCK_UN); }

  private:
    bool lock(int operation) const {
        return untilUninterrupted([=, this] { return flock(fd_, operation); }) == 0 ||
               errno == ENOSYS || errno == ENOLCK || errno == EOPNOTSUPP;
    }

    // Owns the descriptor that `call` opens, in place of the one owned.
    template <typename Call>
    bool adopt(Call call) {
        close();
        fd_ = untilUninterrupted(call);
        return fd_ >= 0;
    }

    int fd_ = -1;
};

}  // namespace vobiutils

#endif
