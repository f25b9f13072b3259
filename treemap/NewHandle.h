// Making a handle that owns its node.
#ifndef VOBIUTILS_TREEMAP_NEWHANDLE_H
#define VOBIUTILS_TREEMAP_NEWHANDLE_H

#include <json-c/json.h>

#include <new>

#include "TreeMapObject.h"
#include "jsondata/JsonRef.h"

namespace vobiutils {

// A new handle that takes over the caller's reference on `node`, which may be null. Throws
// std::bad_alloc when there is no memory for the handle; the reference is released then, too. So
// the source that calls it is compiled with exceptions.
inline TreeMapObject* newOwningHandle(json_object* node) {
    JsonRef owned(node);
    TreeMapObject* const handle = new TreeMapObject(owned.get());
    owned.release();
    return handle;
}

// The same without an exception: null when there is no memory.
inline TreeMapObject* tryOwningHandle(json_object* node) {
    JsonRef owned(node);
    TreeMapObject* const handle = new (std::nothrow) TreeMapObject(owned.get());
    if (handle != nullptr) {
        owned.release();
    }
    return handle;
}

}  // namespace vobiutils

#endif
