// The life of a controller.
#include "LocalDbCtrl.h"
#include "TreeMapObject.h"
#include "localdb/DbSlot.h"
#include "logging/Log.h"

using namespace vobiutils;

LOCALDB_HANDLER::LOCALDB_HANDLER() : dbObject(), state() {
    UTIL_DEBUG("Local DB handler constructor\n");
    for (pthread_mutex_t& mutex : lock) {
        pthread_mutex_init(&mutex, nullptr);
    }
}

namespace {

// intended: a mutex is destroyed only with a loaded object; the memory under the others goes with
// the controller.
void releaseSlot(DbSlot slot) {
    pthread_mutex_lock(&slot.mutex);  // waits for a writer
    int const state = slot.state();
    if (state == DB_STATE_WRITING) {
        UTIL_ERROR("Local DB is in Lock state, cannot be destroyed");  // no line end
        pthread_mutex_unlock(&slot.mutex);
        return;
    }
    if (state == DB_STATE_UNINITIALIZED) {
        pthread_mutex_unlock(&slot.mutex);
        return;
    }
    if (slot.object != nullptr) {
        delete slot.object;
        slot.object = nullptr;
        slot.setState(DB_STATE_UNINITIALIZED);
    }
    pthread_mutex_unlock(&slot.mutex);
    pthread_mutex_destroy(&slot.mutex);
}

}  // namespace

LOCALDB_HANDLER::~LOCALDB_HANDLER() {
    UTIL_DEBUG("Local DB handler destructor\n");
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        releaseSlot(DbSlot(*this, type));
    }
}
