// The table of origins, and when one still holds.
#include "localdb/DocumentOrigin.h"

#include <assert.h>
#include <pthread.h>
#include <stdint.h>
#include <sys/stat.h>

#include "localdb/Chain.h"
#include "logging/MutexGuard.h"

namespace vobiutils {

namespace {

// A hash table. Chains have no destructor: a program may use and remove controllers while the
// process ends.
size_t const CHAIN_COUNT = 31;  // a prime, as addresses are multiples of 8 or more
constinit Chain<Origins> table[CHAIN_COUNT];
pthread_mutex_t tableLock = PTHREAD_MUTEX_INITIALIZER;

// The caller of these two holds the mutex.

Chain<Origins>& chainOf(LOCALDB_HANDLER const* controller) {
    return table[reinterpret_cast<uintptr_t>(controller) % CHAIN_COUNT];
}

Origins* find(LOCALDB_HANDLER const* controller) {
    Origins* origins = chainOf(controller).first;
    while (origins != nullptr && origins->controller != controller) {
        origins = origins->next;
    }
    return origins;
}

}  // namespace

void Origin::set(json_object* value, uint64_t contentVersion) {
    file.reset();
    root.reset(json_object_get(value));
    version = contentVersion;
}

void Origin::forget() { set(nullptr, 0); }

bool Origin::isCurrent(char const* name) const {
    assert(root && file->file);
    struct stat status;
    return file->isSettled && !file->isRecent && name != nullptr && stat(name, &status) == 0 &&
           FileIdentity(status) == file->identity;
}

void addOrigins(Origins* origins) {
    MutexGuard const guard(tableLock);
    assert(find(origins->controller) == nullptr);
    chainOf(origins->controller).append(origins);
}

Origins* findOrigins(LOCALDB_HANDLER const& controller) {
    MutexGuard const guard(tableLock);
    return find(&controller);
}

void removeOrigins(LOCALDB_HANDLER const& controller) {
    Origins* removed = nullptr;
    {
        MutexGuard const guard(tableLock);
        removed = find(&controller);
        if (removed != nullptr) {
            chainOf(&controller).remove(removed);
        }
    }
    delete removed;
}

}  // namespace vobiutils
