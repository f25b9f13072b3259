// The life of a controller.
#include "LocalDbCtrl.h"
#include "TreeMapObject.h"
#include "localdb/Database.h"
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
void releaseDatabase(Database database) {
    pthread_mutex_lock(&database.mutex);  // waits for a writer
    int const state = database.state();
    if (state == DB_STATE_WRITING) {
        UTIL_ERROR("Local DB is in Lock state, cannot be destroyed");  // no line end
        pthread_mutex_unlock(&database.mutex);
        return;
    }
    if (state == DB_STATE_UNINITIALIZED) {
        pthread_mutex_unlock(&database.mutex);
        return;
    }
    if (database.document != nullptr) {
        delete database.document;
        database.document = nullptr;
        database.setState(DB_STATE_UNINITIALIZED);
    }
    pthread_mutex_unlock(&database.mutex);
    pthread_mutex_destroy(&database.mutex);
}

}  // namespace

LOCALDB_HANDLER::~LOCALDB_HANDLER() {
    UTIL_DEBUG("Local DB handler destructor\n");
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        releaseDatabase(Database(*this, type));
    }
}
