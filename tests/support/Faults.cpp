#include "Faults.h"

#include <errno.h>
#include <fcntl.h>
#include <json-c/json.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <atomic>
#include <new>
#include <type_traits>

namespace {

std::atomic<faults::Call> armedCall;
std::atomic<int> countdown = 0;  // 0: nothing is armed
int armedError;

bool fails(faults::Call call) {
    if (countdown == 0 || call != armedCall || --countdown != 0) {
        return false;
    }
    countdown = -1;  // no later call fails
    if (faults::atFault != nullptr) {
        faults::atFault();
    }
    errno = armedError;
    return true;
}

// The result of a failed call.
template <typename Result>
Result failure() {
    if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else {
        return -1;
    }
}

}  // namespace

void (*faults::atFault)();

void faults::arm(Call call, int n, int error) {
    armedCall = call;
    armedError = error;
    countdown = n;
}

bool faults::disarm() { return countdown.exchange(0) < 0; }

#pragma GCC visibility push(default)  // a sanitizer looks for some of the names

// NAME fails when CALL is armed, and otherwise calls the real function; weak, as musl has no fcntl64.
#define WRAP(CALL, RESULT, NAME, PARAMETERS, ...)                                    \
    extern "C" [[gnu::weak]] RESULT __real_##NAME PARAMETERS;                        \
    extern "C" RESULT __wrap_##NAME PARAMETERS;                                      \
    RESULT __wrap_##NAME PARAMETERS {                                                \
        return fails(faults::CALL) ? failure<RESULT>() : __real_##NAME(__VA_ARGS__); \
    }

// Functions that have a second form for large files.
#define WRAP_BOTH(CALL, RESULT, NAME, PARAMETERS, ...) \
    WRAP(CALL, RESULT, NAME, PARAMETERS, __VA_ARGS__)  \
    WRAP(CALL, RESULT, NAME##64, PARAMETERS, __VA_ARGS__)

// Functions that musl gives another name where a time of 64 bits is new.
#define WRAP_STAT(NAME, PARAMETERS, ...)                \
    WRAP_BOTH(STAT, int, NAME, PARAMETERS, __VA_ARGS__) \
    WRAP(STAT, int, __##NAME##_time64, PARAMETERS, __VA_ARGS__)

WRAP_BOTH(OPEN, int, open, (char const* name, int flags, mode_t mode), name, flags, mode)
WRAP(READ, ssize_t, read, (int fd, void* bytes, size_t size), fd, bytes, size)
WRAP(SYNC, int, fsync, (int fd), fd)
WRAP(RENAME, int, rename, (char const* from, char const* to), from, to)
WRAP(UNLINK, int, unlink, (char const* name), name)
WRAP(MOUNT, int, name_to_handle_at,
     (int folder, char const* name, struct file_handle* to, int* mount, int flags), folder, name,
     to, mount, flags)
WRAP_STAT(stat, (char const* name, void* status), name, status)
WRAP_STAT(fstat, (int fd, void* status), fd, status)
WRAP_STAT(lstat, (char const* name, void* status), name, status)
WRAP(LOCK, int, flock, (int fd, int operation), fd, operation)
WRAP(OWNER, int, fchown, (int fd, uid_t owner, gid_t group), fd, owner, group)
WRAP(MODE, int, fchmod, (int fd, mode_t mode), fd, mode)
WRAP_BOTH(DUPLICATE, int, fcntl, (int fd, int command, int from), fd, command, from)
WRAP(LINK, ssize_t, readlink, (char const* name, char* to, size_t size), name, to, size)
WRAP(STAT, ssize_t, llistxattr, (char const* file, char* list, size_t size), file, list, size)
WRAP(XATTR, ssize_t, lgetxattr, (char const* file, char const* name, void* to, size_t size), file,
     name, to, size)
WRAP(XATTR, ssize_t, fgetxattr, (int fd, char const* name, void* to, size_t size), fd, name, to,
     size)
WRAP(XATTR, int, fsetxattr, (int fd, char const* name, void const* from, size_t size, int flags),
     fd, name, from, size, flags)
WRAP(XATTR, int, fremovexattr, (int fd, char const* name), fd, name)
WRAP(ACCESS, int, faccessat, (int folder, char const* name, int mode, int flags), folder, name,
     mode, flags)
WRAP(ALLOCATION, void*, malloc, (size_t size), size)
WRAP(ALLOCATION, void*, realloc, (void* memory, size_t size), memory, size)

// json-c out of memory
WRAP(JSON, json_object*, json_object_new_object, ())
WRAP(JSON, json_object*, json_object_new_array, ())
WRAP(JSON, json_object*, json_object_new_boolean, (json_bool value), value)
WRAP(JSON, json_object*, json_object_new_int, (int32_t value), value)
WRAP(JSON, json_object*, json_object_new_double, (double value), value)
WRAP(JSON, json_object*, json_object_new_string, (char const* text), text)
WRAP(JSON, json_object*, json_object_new_string_len, (char const* text, int size), text, size)
WRAP(JSON, int, json_object_object_add, (json_object * object, char const* key, json_object* value),
     object, key, value)
WRAP(JSON, int, json_object_object_add_ex,
     (json_object * object, char const* key, json_object* value, unsigned int options), object, key,
     value, options)
WRAP(JSON, int, json_object_array_add, (json_object * array, json_object* value), array, value)
WRAP(JSON, int, json_object_array_put_idx, (json_object * array, size_t index, json_object* value),
     array, index, value)
WRAP(JSON, int, json_object_deep_copy,
     (json_object * from, json_object** to, json_c_shallow_copy_fn* copy), from, to, copy)
WRAP(JSON, char const*, json_object_to_json_string, (json_object * value), value)
WRAP(JSON, json_object*, json_tokener_parse, (char const* text), text)
WRAP(JSON, json_tokener*, json_tokener_new, ())

// The file is closed all the same.
extern "C" int __real_close(int fd);
extern "C" int __wrap_close(int fd);
int __wrap_close(int fd) {
    bool const failing = fails(faults::CLOSE);
    int const error = errno;
    int const result = __real_close(fd);
    errno = failing ? error : errno;
    return failing ? -1 : result;
}

// json-c drops the characters for which it has no memory, and only errno tells.
extern "C" char const* __real_json_object_to_json_string_length(json_object*, int, size_t*);
extern "C" char const* __wrap_json_object_to_json_string_length(json_object*, int, size_t*);
char const* __wrap_json_object_to_json_string_length(json_object* value, int flags,
                                                     size_t* length) {
    char const* const text = __real_json_object_to_json_string_length(value, flags, length);
    bool const isLasting = armedCall == faults::TEXTS && countdown < 0;
    if (fails(faults::TEXT) || fails(faults::TEXTS) || isLasting) {
        errno = armedError;
        --*length;
    }
    return fails(faults::JSON) ? nullptr : text;
}

extern "C" ssize_t __real_write(int fd, void const* bytes, size_t size);
extern "C" ssize_t __wrap_write(int fd, void const* bytes, size_t size);
ssize_t __wrap_write(int fd, void const* bytes, size_t size) {
    return fails(faults::WRITE) ? -1
                                : __real_write(fd, bytes, fails(faults::SHORT_WRITE) ? 1 : size);
}

void* operator new(size_t size, std::nothrow_t const&) noexcept { return malloc(size); }
void* operator new[](size_t size, std::nothrow_t const& tag) noexcept {
    return operator new(size, tag);
}
void* operator new(size_t size) {
    void* const memory = operator new(size, std::nothrow);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }
void operator delete[](void* memory, size_t) noexcept { free(memory); }

#pragma GCC visibility pop
