#include "DbSlot.h"

#include "FileName.h"
#include "JsonData.h"
#include "Log.h"

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
    setState(DB_STATE_ACCESSIBLE);
    UTIL_DEBUG("%s: Initialized local database for api type %d\n", function, number);
}
