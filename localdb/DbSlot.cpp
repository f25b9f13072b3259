#include "localdb/DbSlot.h"

#include <new>

#include "JsonData.h"
#include "TreeMapObject.h"
#include "localdb/FileName.h"
#include "logging/Log.h"

namespace vobiutils {

void DbSlot::load(char const* function, int number) {
    FileName const file = FileName::ofData(apiType);
    if (file.get() == nullptr) {
        return;
    }
    object = JsonData::createObjectFromFile(file.get());
    if (object == nullptr) {
        UTIL_WARN("%s: Cannot load database from %s\n", function, file.get());
        return;
    }
    UTIL_DEBUG("%s: Initialized local database for api type %d\n", function, number);
}

bool DbSlot::tryLoad(char const* function, int number) {
    try {
        load(function, number);
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

bool DbSlot::tryGet(char const* path, TreeMapObject*& node) const {
    try {
        node = object->get(path);
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

}  // namespace vobiutils
