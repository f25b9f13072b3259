#include "localdb/Database.h"

#include <new>

#include "JsonData.h"
#include "TreeMapObject.h"
#include "localdb/FileName.h"
#include "logging/Log.h"

namespace vobiutils {

void Database::load(char const* function, int number) {
    FileName const file = FileName::ofData(apiType);
    if (file.get() == nullptr) {
        return;
    }
    document = JsonData::createObjectFromFile(file.get());
    if (document == nullptr) {
        UTIL_WARN("%s: Cannot load database from %s\n", function, file.get());
        return;
    }
    UTIL_DEBUG("%s: Initialized local database for api type %d\n", function, number);
}

bool Database::tryLoad(char const* function, int number) {
    try {
        load(function, number);
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

bool Database::tryGet(char const* path, TreeMapObject*& node) const {
    try {
        node = document->get(path);
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

}  // namespace vobiutils
