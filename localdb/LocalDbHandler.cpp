// Makes and destroys a controller.
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

// intended: only the mutex of a loaded database is destroyed; the others are freed with the
// controller as they are.
void releaseDatabase(Database database) {
    pthread_mutex_lock(&database.mutex);  // waits while a writer holds it
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
    if (database.document() != nullptr) {
        database.drop();
        database.setState(DB_STATE_UNINITIALIZED);
    }
    pthread_mutex_unlock(&database.mutex);
    pthread_mutex_destroy(&database.mutex);
}

}  // namespace

LOCALDB_HANDLER::~LOCALDB_HANDLER() {
    UTIL_DEBUG("Local DB handler destructor\n");
    Origins* const origins = findOrigins(*this);
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        releaseDatabase(Database(*this, type, origins));
    }
    removeOrigins(*this);
}
