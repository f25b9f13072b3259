// The system calls on a file descriptor, each a function of its own: inlined wherever they are used,
// they take 624 bytes more on MIPS.
#include "jsondata/files/FileDescriptor.h"

namespace vobiutils {

namespace {

// The result of `call`, repeated as long as a signal interrupts it.
template <typename Call>
auto untilUninterrupted(Call call) -> decltype(call()) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

}  // namespace

bool FileDescriptor::open(char const* name, int flags, mode_t mode) {
    close();
    fd_ = untilUninterrupted([=] { return ::open(name, flags | O_CLOEXEC, mode); });
    return fd_ >= 0;
}

bool FileDescriptor::duplicate(FileDescriptor const& other) {
    close();
    fd_ = untilUninterrupted([&] { return fcntl(other.fd_, F_DUPFD_CLOEXEC, 0); });
    return fd_ >= 0;
}

bool FileDescriptor::close() {
    int const fd = fd_;
    fd_ = -1;
    return fd < 0 || ::close(fd) == 0;
}

ssize_t FileDescriptor::read(void* bytes, size_t size) const {
    return untilUninterrupted([=, this] { return ::read(fd_, bytes, size); });
}

ssize_t FileDescriptor::readFully(char* bytes, size_t size) const {
    size_t used = 0;
    ssize_t count = 1;
    while (used < size && count > 0) {
        count = read(bytes + used, size - used);
        used += count > 0 ? static_cast<size_t>(count) : 0;
    }
    return count < 0 ? -1 : static_cast<ssize_t>(used);
}

bool FileDescriptor::resize(off_t length) const {
    return untilUninterrupted([=, this] { return ftruncate(fd_, length); }) == 0;
}

bool FileDescriptor::writeAll(char const* bytes, size_t length) const {
    while (length > 0) {
        ssize_t const count = untilUninterrupted([=, this] { return ::write(fd_, bytes, length); });
        if (count <= 0) {
            return false;
        }
        bytes += count;
        length -= static_cast<size_t>(count);
    }
    return true;
}

bool FileDescriptor::sync() const {
    return untilUninterrupted([this] { return fsync(fd_); }) == 0;
}

bool FileDescriptor::lock(int operation) const {
    return untilUninterrupted([=, this] { return flock(fd_, operation); }) == 0 ||
           errno == ENOSYS || errno == ENOLCK || errno == EOPNOTSUPP;
}

}  // namespace vobiutils
