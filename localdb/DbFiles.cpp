// API types and their files: the public names, and validation against a message's schema file.
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

// Copies a name into a buffer that outlives it; null when there is no name.
char* keep(FileName const& name, char (&buffer)[FileName::SIZE]) {
    return name.get() != nullptr ? strcpy(buffer, name.get()) : nullptr;
}

}  // namespace

char const* LocalDbCtrl::getApiDir(unsigned int apiType) {
    return apiType < API_TYPE_COUNT ? API_DATA_DIR[apiType] : nullptr;
}

char* LocalDbCtrl::getFileName(unsigned int apiType) {
    static thread_local char buffer[FileName::SIZE];
    bool const hasNoFolder = apiType < API_TYPE_COUNT && API_DATA_DIR[apiType] == nullptr;
    if (hasNoFolder) {  // intended: the name formed before is given again
        return buffer[0] != '\0' ? buffer : nullptr;
    }
    return keep(FileName::ofData(apiType), buffer);
}

char* LocalDbCtrl::getFileName(unsigned int apiType, unsigned int commType) {
    static thread_local char buffer[FileName::SIZE];
    return keep(FileName::ofMessage(apiType, commType), buffer);
}

char* LocalDbCtrl::getSchemaFile(unsigned int apiType, unsigned int commType) {
    static thread_local char buffer[FileName::SIZE];
    return keep(FileName::ofSchema(apiType, commType), buffer);
}

int LocalDbCtrl::validateObject(TreeMapObject* obj, unsigned int apiType, unsigned int commType) {
    FileName const schema = FileName::ofSchema(apiType, commType);
    if (schema.get() == nullptr) {
        UTIL_ERROR("%s: failed to get schema file apiT=%d commT=%d\n", "validateObject",
                   static_cast<int>(apiType), static_cast<int>(commType));
        return 2;
    }
    if (obj == nullptr || obj->jobj == nullptr) {
        void* const none = nullptr;  // intended: the second pointer is always printed as null
        UTIL_ERROR("%s: incorrect object obj=%p jobj=%p\n", "validateObject",
                   static_cast<void*>(obj), none);
        return 2;
    }
    return JsonData::validateFile(obj, schema.get());
}
