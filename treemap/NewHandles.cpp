// Making handles: all that the documents and their handles have to do with exceptions stands here.
#include "treemap/NewHandles.h"

#include <sys/stat.h>

#include <memory>
#include <new>

#include "JsonData.h"
#include "jsondata/JsonLookup.h"
#include "jsondata/JsonRef.h"
#include "jsondata/files/JsonFile.h"
#include "logging/Log.h"
#include "treemap/KeyName.h"

using namespace vobiutils;

namespace {

// Takes over one reference on `node`, which is released when there is no memory for the handle.
TreeMapObject* newOwningHandle(json_object* node) {
    JsonRef owned(node);
    TreeMapObject* const handle = new TreeMapObject(owned.get());
    owned.release();
    return handle;
}

}  // namespace

bool vobiutils::appendHandle(std::list<TreeMapObject*>& list, json_object* node) {
    try {
        std::unique_ptr<TreeMapObject> handle(newOwningHandle(json_object_get(node)));
        list.push_back(handle.get());
        handle.release();
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

TreeMapObject* JsonData::createObject(char const* text) {
    json_object* const document = text != nullptr ? json_tokener_parse(text) : nullptr;
    return document != nullptr ? newOwningHandle(document) : nullptr;
}

TreeMapObject* JsonData::createObjectFromFile(char const* file) {
    struct stat status;
    if (file == nullptr || stat(file, &status) != 0) {
        return nullptr;
    }
    return newOwningHandle(readJsonFile(file));  // intended: also when that reads nothing
}

TreeMapObject* TreeMapObject::get(char const* path) {
    Lookup const found = lookUp(jobj, path);
    if (found.value == nullptr) {
        return nullptr;
    }
    TreeMapObject* const node = new TreeMapObject(found.value);
    if (found.outcome == Lookup::ROOT) {
        json_object_get(found.value);  // a second owner, so that either may go first
        return node;
    }
    node->jobj_parent = found.parent;
    setKeyName(*node, found.last.text());
    return node;
}

TreeMapObject* TreeMapObject::at(unsigned int index) {
    array_list const* const elements = json_object_get_array(jobj);  // null unless it is an array
    if (elements == nullptr || index >= elements->length) {
        return nullptr;
    }
    TreeMapObject* const element =
        new TreeMapObject(static_cast<json_object*>(elements->array[index]));
    element->jobj_parent = jobj;
    setElementName(*element, index);
    return element;
}

TreeMapObject* TreeMapObject::clone(char const* path) {
    json_object* const source = path == nullptr ? jobj : JsonData::getJObj(jobj, path);
    if (source == nullptr) {
        UTIL_ERROR("%s: fail to get object by path\n", "clone");
        return nullptr;
    }
    json_object* const copy = JsonData::cloneObject(source);
    if (copy == nullptr) {
        UTIL_ERROR("%s: fail to clone object\n", "clone");
        return nullptr;
    }
    return newOwningHandle(copy);
}
