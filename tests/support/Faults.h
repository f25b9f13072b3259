// Fault injection: makes one of the library's calls to the system, the allocator or json-c fail.
// Programs that use it are linked with --wrap for these calls (see tests/CMakeLists.txt). json-c's
// own calls are not wrapped.
#pragma once

namespace faults {

enum Call {
    OPEN,
    READ,
    WRITE,
    SHORT_WRITE,
    SYNC,
    RENAME,
    UNLINK,
    CLOSE,
    STAT,
    LOCK,
    OWNER,
    MODE,
    DUPLICATE,
    LINK,
    ACCESS,
    MOUNT,  // the call that tells a file's mount
    XATTR,  // a call for one extended attribute
    ALLOCATION,
    JSON,  // a call to json-c, out of memory
    TEXT,  // json-c leaves out a part of a text
    TEXTS  // of every text from then on
};

// From now on the n-th call of that kind, counted from 1 over all threads, fails with `error`; a
// SHORT_WRITE writes one byte.
void arm(Call call, int n, int error);

// Called, unless null, when a call is made to fail.
extern void (*atFault)();

// Ends that. Returns whether the call was reached.
bool disarm();

}  // namespace faults
