// Faults on purpose: makes one of the calls that the library makes to the system fail. Programs that
// use it are linked with the calls wrapped (see tests/CMakeLists.txt), those to json-c among them;
// json-c's own calls are not.
#ifndef VOBIUTILS_TESTS_FAULTS_H
#define VOBIUTILS_TESTS_FAULTS_H

namespace faults {

enum Call {
    OPEN,
    READ,
    WRITE,
    SHORT_WRITE,
    SYNC,
    RENAME,
    CLOSE,
    STAT,
    LOCK,
    OWNER,
    MODE,
    DUPLICATE,
    LINK,
    ACCESS,
    XATTR,  // a call on one extended attribute
    ALLOCATION,
    JSON  // a call to json-c, for lack of memory
};

// From now on, in all threads, the n-th (from 1) call of that kind fails with `error`; a
// SHORT_WRITE writes one byte.
void arm(Call call, int n, int error);

// Called, unless null, when a call is made to fail.
extern void (*atFault)();

// Ends that; whether the call was reached.
bool disarm();

}  // namespace faults

#endif
