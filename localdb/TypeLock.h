// Locking one API type of one controller: what the plain operations and the transaction share.
//
// The mutex serialises writers and is held from one call to another: no scope guard fits. The state
// turns away at once whoever comes while a writer holds the type.
//
// A release frees the mutex first and changes the state last, when the document is saved and
// destroyed. In between the state still reads 2, and the releasing thread alone owns the document: a
// writer that gets the mutex in that time gives it back and waits for the state to change.
#ifndef VOBIUTILS_LOCALDB_TYPELOCK_H
#define VOBIUTILS_LOCALDB_TYPELOCK_H

#include <time.h>

#include <optional>

#include "DbSlot.h"

// Nothing for a bad type and for a key without a controller.
std::optional<DbSlot> findSlot(unsigned int apiType, char const* sessionKey);

// Returns holding the mutex of a type that nobody is writing, saving or destroying. With a deadline, by
// the monotonic clock, false when it has passed before.
void acquire(DbSlot& slot);
bool acquireBefore(DbSlot& slot, timespec const& deadline);

// A mutex that nobody holds must not be unlocked: it is taken first, if it is free. Two releases
// never come between each other's two steps.
void releaseMutex(DbSlot& slot);

// The second half of a release: `state` follows 2, and whoever waits for that goes on.
void endWriting(DbSlot& slot, int state);

// Writes the document to its file and drops it. 0 or 2.
int saveAndDrop(DbSlot& slot);

#endif
