// LocalDbCtrl's functions for files: their names, and validation against the schema file of a
// message.
#include <string.h>

#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "TreeMapObject.h"
#include "localdb/FileName.h"
#include "logging/Log.h"

using namespace vobiutils;

char const* API_DATA_DIR[API_TYPE_COUNT] = {
    "gateway", "wifi", "network", "security", "service", "mediashare", "qos", "misc", "fac",
};

namespace {

// Returns the buffer with a copy of the name, or null if there is no name.
char* copyInto(char (&buffer)[FileName::SIZE], FileName const& name) {
    return name.get() != nullptr ? strcpy(buffer, name.get()) : nullptr;
}

}  // namespace

char const* LocalDbCtrl::getApiDir(unsigned int apiType) {
    return apiType < API_TYPE_COUNT ? API_DATA_DIR[apiType] : nullptr;
}

unsigned int LocalDbCtrl::getApiType(char const* folder) {
    unsigned int type = 0;
    while (type < API_TYPE_COUNT && (folder == nullptr || API_DATA_DIR[type] == nullptr ||
                                     strcmp(API_DATA_DIR[type], folder) != 0)) {
        ++type;
    }
    return type;
}

char* LocalDbCtrl::getFileName(unsigned int apiType) {
    static thread_local char buffer[FileName::SIZE];
    bool const hasNoFolder = apiType < API_TYPE_COUNT && API_DATA_DIR[apiType] == nullptr;
    if (hasNoFolder) {  // intended: returns the name formed before
        return buffer[0] != '\0' ? buffer : nullptr;
    }
    return copyInto(buffer, FileName::ofData(apiType));
}

char* LocalDbCtrl::getFileName(unsigned int apiType, unsigned int commType) {
    static thread_local char buffer[FileName::SIZE];
    return copyInto(buffer, FileName::ofMessage(apiType, commType));
}

char* LocalDbCtrl::getSchemaFile(unsigned int apiType, unsigned int commType) {
    static thread_local char buffer[FileName::SIZE];
    return copyInto(buffer, FileName::ofSchema(apiType, commType));
}

int LocalDbCtrl::validateObject(TreeMapObject* obj, unsigned int apiType, unsigned int commType) {
    FileName const schema = FileName::ofSchema(apiType, commType);
    if (schema.get() == nullptr) {
        UTIL_ERROR("%s: failed to get schema file apiT=%d commT=%d\n", "validateObject",
                   static_cast<int>(apiType), static_cast<int>(commType));
        return 2;
    }
    if (obj == nullptr || obj->jobj == nullptr) {
        void* const none = nullptr;  // intended: jobj is always logged as null
        UTIL_ERROR("%s: incorrect object obj=%p jobj=%p\n", "validateObject",
                   static_cast<void*>(obj), none);
        return 2;
    }
    return JsonData::validateFile(obj, schema.get());
}
