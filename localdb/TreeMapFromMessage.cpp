// TreeMapObject's constructor for message files. It is here so that treemap/ does not depend on
// localdb/.
#include "TreeMapObject.h"
#include "jsondata/files/JsonFile.h"
#include "localdb/FileName.h"
#include "logging/Log.h"

using namespace vobiutils;

TreeMapObject::TreeMapObject(unsigned int apiType, unsigned int commType) : TreeMapObject() {
    FileName const name = FileName::ofMessage(apiType, commType);
    UTIL_INFO("TreeMapObject::TreeMapObject filename=%s\n", printable(name.get()));
    if (name.get() == nullptr) {
        error = 1;
        UTIL_DEBUG("failed load object from %s\n", printable(nullptr));
        return;
    }
    jobj = readJsonFile(name.get());
    if (jobj == nullptr) {
        jobj = json_object_new_object();
    }
}
