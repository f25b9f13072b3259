// Documents as a whole: from and to text and files, copies, and dumps.
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "JsonData.h"
#include "TreeMapObject.h"
#include "jsondata/JsonDocument.h"
#include "jsondata/files/JsonFile.h"
#include "jsondata/files/JsonSave.h"
#include "logging/Log.h"
#include "treemap/NewHandle.h"

using namespace vobiutils;

namespace {

json_object* copyThroughText(json_object* source) {
    char const* const text = json_object_to_json_string(source);
    if (text == nullptr || *text == '\0') {
        UTIL_ERROR("%s: fail to get json string\n", "cloneObject");
        return nullptr;
    }
    UTIL_DEBUG("%s: parser json to create new object\n", "cloneObject");
    return json_tokener_parse(text);
}

// intended: a null path means the whole value, and so does "(null)", which is what a null prints
// as.
bool namesWholeValue(char const* path) {
    return path == nullptr || *path == '\0' || strcmp(path, "(null)") == 0;
}

}  // namespace

TreeMapObject* JsonData::createObject(char const* text) {
    json_object* const document = text != nullptr ? json_tokener_parse(text) : nullptr;
    return document != nullptr ? newOwningHandle(document) : nullptr;
}

TreeMapObject* JsonData::createObjectFromFile(char const* file) {
    struct stat status;
    if (file == nullptr || stat(file, &status) != 0) {
        return nullptr;
    }
    return newOwningHandle(
        readJsonFile(file));  // intended: a handle without a value when that fails
}

char const* JsonData::getJson(TreeMapObject* obj) {
    if (obj == nullptr || obj->error != 0 || obj->jobj == nullptr) {
        return nullptr;
    }
    return json_object_to_json_string_ext(obj->jobj,
                                          JSON_C_TO_STRING_SPACED | JSON_C_TO_STRING_PRETTY);
}

json_object* JsonData::cloneObject(json_object* jobj) {
    if (jobj == nullptr) {
        UTIL_ERROR("%s: bad pobj param jobj=%p\n", "cloneObject", static_cast<void*>(jobj));
        return nullptr;
    }
    UTIL_DEBUG("%s: clone json object %p\n", "cloneObject", static_cast<void*>(jobj));
    json_object* const copy = copyThroughText(jobj);
    if (copy == nullptr) {
        UTIL_ERROR("%s: fail to create new object\n", "cloneObject");
    }
    return copy;
}

int JsonData::saveObjectToFile(char const* file, TreeMapObject* obj) {
    return saveDocument(file, obj, nullptr);
}

int vobiutils::saveDocument(char const* file, TreeMapObject const* document, uint64_t* version) {
    UTIL_DEBUG("%s: save obj=%p\n", "saveObjectToFile", static_cast<void const*>(document));
    int const ret =
        document != nullptr ? saveJsonFile(file, document->jobj, Durability::SYNCED, version) : -1;
    if (ret != 0) {
        UTIL_DEBUG("%s: failed to save object to file (%s) ret=%d\n", "saveObjectToFile",
                   printable(file), ret);
        return 2;
    }
    UTIL_DEBUG("%s: object is saved\n", "saveObjectToFile");
    return 0;
}

int JsonData::dumpObject(TreeMapObject* obj, char const* path) {
    if (obj == nullptr || obj->jobj == nullptr) {
        return fprintf(stderr, "%s: wrong params obj=%p\n", "dumpObject", static_cast<void*>(obj));
    }
    json_object* const value = namesWholeValue(path) ? obj->jobj : getJObj(obj->jobj, path);
    if (value == nullptr) {
        return 0;
    }
    return fprintf(stderr, "%s: %s\ntype=%d\n%s\n", "dumpObject", printable(path),
                   static_cast<int>(json_object_get_type(value)),
                   json_object_to_json_string_ext(value, JSON_C_TO_STRING_PRETTY));
}
