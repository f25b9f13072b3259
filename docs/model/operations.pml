/* The operations on one database of localdb/LocalDbLock.cpp, LocalDbTransaction.cpp and TransactionLock.cpp. */

#define OPERATION_VARIABLES byte round, sleeper, d; bool acquired, inTime, wasWriting, isLocked[DATABASES], isReleased[DATABASES]

inline load(d) { /* Database::load */
    if
    :: use(d, true)
    :: use(d, false) /* no file */
    fi
}

/* Leaves isLocked false if the lock is refused; with it true, the mutex is held, and what was returned is a handle
   if the state is WRITING, else null. */
inline lockDbObject(d) {
    if
    :: state[d] == WRITING
    :: state[d] != WRITING ->
       acquire(d, false);
       isLocked[d] = true;
       if /* documentOrNode */
       :: state[d] == UNINITIALIZED -> load(d); state[d] = idleState(d)
       :: state[d] != UNINITIALIZED
       fi;
       if
       :: document[d] -> state[d] = WRITING; use(d, true) /* by the program */
       :: true /* no such node, or no document */
       fi
    fi
}

/* Also unlockDbObject, which keeps the document. */
inline saveDbObject(d) {
    wasWriting = (state[d] == WRITING); /* logAndRelease */
    release(d);
    if
    :: wasWriting ->
       if
       :: document[d] -> use(d, false)
       :: true
       fi;
       endWriting(d)
    :: !wasWriting
    fi;
    wasWriting = false;
    isLocked[d] = false
}

inline endRelease(d) { /* TransactionLock::endRelease */
    if
    :: isReleased[d] -> endWriting(d); isReleased[d] = false
    :: !isReleased[d]
    fi
}

inline saveOrKeep(d) { /* between the two halves of a release; or discards */
    if
    :: isReleased[d] -> use(d, false)
    :: isReleased[d] && document[d] -> use(d, true)
    :: !isReleased[d]
    fi
}

/* LocalDbTransaction::lock and TransactionLock::prepare. Leaves isLocked false if the database is busy, or released
   again. */
inline lockForTransaction(d) {
    acquire(d, true);
    if
    :: acquired ->
       beginClaim(d);
       state[d] = WRITING;
       load(d); /* readDocument; or checkDocument, which keeps, drops or reads it again */
       isLocked[d] = document[d];
       if
       :: isLocked[d]
       :: isLocked[d] = false; /* no such node, no memory */
          beginUse(d);
          releaseClaim(d);
          assert(isReleased[d]);
          saveOrKeep(d);
          endRelease(d);
          endUse(d)
       fi
    :: !acquired
    fi
}
