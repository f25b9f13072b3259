/* THREADS threads, each with OPERATIONS operations on DATABASES databases of one controller: plain locks, which give a
   handle or, holding the mutex, null (localdb/LocalDbLock.cpp), and transactions on one database or two
   (localdb/LocalDbTransaction.cpp, TransactionLock.cpp), which save, keep, discard or are ended by a plain release.
   Every run comes to its end: no deadlock, no lost wake-up. */
#define isAlive(d) true
#define beginUse(d) skip
#define endUse(d) skip
#include "pthread.pml"
#include "lock.pml"
#include "operations.pml"

#define other (DATABASES - 1 - d)

/* LocalDbTransaction.cpp, release: each half for all databases. */
inline endTransaction() {
    releaseClaim(d);
    if
    :: DATABASES > 1 && isLocked[other] -> releaseClaim(other)
    :: else
    fi;
    saveOrKeep(d);
    if
    :: DATABASES > 1 -> saveOrKeep(other)
    :: else
    fi;
    endRelease(d);
    if
    :: DATABASES > 1 -> endRelease(other)
    :: else
    fi;
    isLocked[d] = false;
    isLocked[other] = false
}

proctype thread() {
    OPERATION_VARIABLES;
    do
    :: round < OPERATIONS ->
       round++;
       if
       :: d = 0
       :: d = DATABASES - 1
       fi;
       if
       :: lockDbObject(d);
          if /* while it has a handle, it may lock another database */
          :: DATABASES > 1 && isLocked[d] && state[d] == WRITING -> lockDbObject(other)
          :: true
          fi;
          if
          :: DATABASES > 1 && isLocked[other] -> saveDbObject(other)
          :: else
          fi;
          if
          :: isLocked[d] -> saveDbObject(d)
          :: else
          fi
       :: lockForTransaction(d);
          if
          :: isLocked[d] ->
             use(d, true); /* by the program */
             if /* also */
             :: DATABASES > 1 -> lockForTransaction(other)
             :: true
             fi;
             if /* within the transaction's scope */
             :: saveDbObject(d)
             :: true
             fi;
             endTransaction()
          :: !isLocked[d]
          fi
       fi
    :: round == OPERATIONS -> break
    od
}

init {
    byte i;
    atomic {
        for (i : 1 .. THREADS) { run thread() }
    }
}
