// What is known of the documents that the library has read and no caller has been given for writing
// since: which content of the file they are, and whether the file may be read again in their place.
//
// This is kept beside the controllers, whose fields are public and fixed. A program may change these
// fields itself, and make controllers of its own, of which nothing is known. So an origin counts
// only if the controller still has the very value that was read (Database::origin).
#pragma once

#include <stdint.h>

#include <memory>

#include "LocalDbCtrl.h"
#include "jsondata/JsonRef.h"
#include "jsondata/files/FileContent.h"

namespace vobiutils {

// Belongs to the thread that the document belongs to (Database.h).
struct Origin {
    // Forgets the document before, but not its base, and shares the value that was read, or a copy of
    // it: no other value can get its address as long as it is known.
    void set(json_object* value, uint64_t contentVersion);
    void forget();

    // Whether the file of that name is still the one that was read. Needs `file`.
    bool isCurrent(char const* name) const;

    JsonRef root = JsonRef(nullptr);
    uint64_t version = 0;  // of the content (FileBytes.h)
    uint64_t base = 0;     // the version that was read, also once the document has been
                           // given to a caller; 0 if that is not known
    std::unique_ptr<FileContent> file;  // open, without its bytes; null if it is not read again
};

// The origins of one controller's documents.
struct Origins {
    Origins(LOCALDB_HANDLER const& owner, bool followFiles)
        : controller(&owner), areReadAgain(followFiles) {}

    LOCALDB_HANDLER const* const controller;
    bool const areReadAgain;  // an unchanged document follows its file, as in the default
                              // controller; a session's own keeps what it was made with
    Origin of[API_TYPE_COUNT];
    Origins* next = nullptr;  // in a chain of the table
};

// Begins to know the documents of a controller, which has none yet. Takes over `origins`.
void addOrigins(Origins* origins);

// The origins of a controller's documents, or null. They live as long as the controller.
Origins* findOrigins(LOCALDB_HANDLER const& controller);

// Called by the destructor of every controller.
void removeOrigins(LOCALDB_HANDLER const& controller);

}  // namespace vobiutils
