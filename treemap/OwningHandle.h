// Making the handles that own what they stand for.
#ifndef VOBIUTILS_TREEMAP_OWNINGHANDLE_H
#define VOBIUTILS_TREEMAP_OWNINGHANDLE_H

#include "JsonRef.h"
#include "TreeMapObject.h"

// A new handle that takes over one reference on `node`. When there is no memory for it the
// reference is released and std::bad_alloc thrown.
inline TreeMapObject* newOwningHandle(json_object* node) {
    JsonRef owned(node);
    TreeMapObject* const handle = new TreeMapObject(owned.get());
    owned.release();
    return handle;
}

#endif
