// Finds, adds and removes the entries of the map, without an exception.
#include "localdb/ControllerTable.h"

#include <new>

// Early for a static build; see BEConfig.cpp.
[[gnu::init_priority(101)]] std::map<std::string, LOCALDB_HANDLER*> LocalDbCtrl::controllers;

namespace vobiutils {

// The map's own search needs a std::string, which takes memory if the key is long. Without that, the
// entries are searched one by one: a writer must be able to end its lock even when out of memory.
ControllerEntry findEntry(char const* key) {
    try {
        return LocalDbCtrl::controllers.find(key);
    } catch (std::bad_alloc const&) {
    }
    ControllerEntry entry = LocalDbCtrl::controllers.begin();
    while (isFound(entry) && entry->first != key) {
        ++entry;
    }
    return entry;
}

ControllerEntry addEntry(char const* key) {
    try {
        return LocalDbCtrl::controllers.emplace(key, nullptr).first;
    } catch (std::bad_alloc const&) {
        return LocalDbCtrl::controllers.end();
    }
}

void removeEntry(ControllerEntry entry) { LocalDbCtrl::controllers.erase(entry); }

}  // namespace vobiutils
