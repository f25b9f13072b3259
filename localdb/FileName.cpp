// Forms file names from the data directory, the folder of an API type and the label of a message.
#include "localdb/FileName.h"

#include <stdio.h>

#include "BEConfig.h"
#include "LocalDbCtrl.h"
#include "labels/LabelTable.h"

namespace vobiutils {

FileName::FileName(char const* folder, char const* base, char const* suffix, size_t size) {
    text_[0] = '\0';
    if (folder == nullptr || base == nullptr) {
        return;
    }
    int const length =
        snprintf(text_, size, "%s/%s/%s%s", BEConfig::DATA_LOCATION.c_str(), folder, base, suffix);
    if (length < 0 || static_cast<size_t>(length) >= size) {
        text_[0] = '\0';
    }
}

FileName FileName::ofData(unsigned int apiType) {
    char const* const folder = LocalDbCtrl::getApiDir(apiType);
    return FileName(folder, folder, ".ldb");
}

FileName FileName::ofMessage(unsigned int apiType, unsigned int commType) {
    return FileName(LocalDbCtrl::getApiDir(apiType), labelAt(apiType, commType), ".ldb");
}

FileName FileName::ofSchema(unsigned int apiType, unsigned int commType) {
    return FileName(LocalDbCtrl::getApiDir(apiType), labelAt(apiType, commType), "_SCHEMA.ldb");
}

FileName FileName::ofDataSchema(unsigned int apiType) {
    char const* const folder = LocalDbCtrl::getApiDir(apiType);
    return FileName(folder, folder, "_SCHEMA.ldb", SCHEMA_SIZE);
}

FileName FileName::ofLock(unsigned int apiType) {
    return FileName(LocalDbCtrl::getApiDir(apiType), "", ".lock");
}

}  // namespace vobiutils
