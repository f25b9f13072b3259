// The table of origins, and when one still holds.
#include "localdb/DocumentOrigin.h"

#include <pthread.h>
#include <sys/stat.h>

#include <map>

#include "logging/MutexGuard.h"

namespace vobiutils {

namespace {

typedef std::map<LOCALDB_HANDLER const*, Origins> Table;

// Not destroyed: a program may use and remove controllers while the process ends.
union Kept {
    Kept() : table() {}
    ~Kept() {}
    Table table;
};

// Early for a static build; see BEConfig.cpp.
[[gnu::init_priority(101)]] Kept kept;
pthread_mutex_t tableLock = PTHREAD_MUTEX_INITIALIZER;

}  // namespace

void Origin::set(json_object* value, uint64_t contentVersion) {
    file.reset();
    root.reset(json_object_get(value));
    version = contentVersion;
}

void Origin::forget() { set(nullptr, 0); }

bool Origin::isCurrent(char const* name) const {
    struct stat status;
    return file->isSettled && !file->isRecent && name != nullptr && stat(name, &status) == 0 &&
           FileIdentity(status) == file->identity;
}

Origins& addOrigins(LOCALDB_HANDLER const& controller, bool areReadAgain) {
    MutexGuard const guard(tableLock);
    Origins& origins = kept.table[&controller];
    origins.areReadAgain = areReadAgain;
    return origins;
}

Origins* findOrigins(LOCALDB_HANDLER const& controller) {
    MutexGuard const guard(tableLock);
    Table::iterator const entry = kept.table.find(&controller);
    return entry != kept.table.end() ? &entry->second : nullptr;
}

void removeOrigins(LOCALDB_HANDLER const& controller) {
    Table::node_type removed;  // is destroyed without the mutex
    MutexGuard const guard(tableLock);
    removed = kept.table.extract(&controller);
}

}  // namespace vobiutils
