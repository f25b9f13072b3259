// Apart from the search, because only this needs exceptions.
#include "treemap/Hits.h"

#include <memory>
#include <new>

#include "treemap/NewHandle.h"

bool vobiutils::append(Hits& hits, json_object* node) {
    try {
        std::unique_ptr<TreeMapObject> handle(newOwningHandle(json_object_get(node)));
        hits.push_back(handle.get());
        handle.release();
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}
