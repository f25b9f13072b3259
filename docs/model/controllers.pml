/* THREADS threads, each with OPERATIONS operations on the database of one type in the controllers of two keys: the
   default one, and a session that is made and removed meanwhile (localdb/LocalDbRegistry.cpp). A database has the
   index of its controller, which stands for its address; a new controller may get the address of a deleted one. */
#define DATABASES 3
#define DEFAULT 0
#define NONE 255
#define USE_ENDED 2 /* a condition */

bool alive[DATABASES];
byte entry = 1;               /* of the session's key */
byte registryLock = 255;
byte uses[DATABASES];         /* the chain: how many calls work on a controller, and who is about to remove which */
byte removal[THREADS + 1] = NONE;
byte target[THREADS + 1] = NONE; /* what the removal was called for */
bool isReplaced[THREADS + 1];     /* and whether that is gone, and its address given away */

#define isAlive(d) alive[d]
#include "pthread.pml"
#include "lock.pml"

inline beginUse(d) { /* ControllerUse::ControllerUse */
    lock(registryLock);
    uses[d]++;
    unlock(registryLock)
}

inline notifyUseEnded() {
    atomic {
        for (i : 1 .. THREADS) {
            if
            :: sleepsOn[i] == USE_ENDED -> sleepsOn[i] = AWAKE
            :: else
            fi
        }
        i = 0
    }
}

inline endUse(d) { /* ControllerUse::~ControllerUse */
    lock(registryLock);
    uses[d]--;
#if FAULT != 5 /* tells no removal */
    notifyUseEnded();
#endif
    unlock(registryLock)
}

/* ControllerUse::find with the session's key */
inline find(found) {
    lock(registryLock); /* lookUp */
    found = entry;
#if FAULT == 6 /* finds and enters in two steps */
    unlock(registryLock);
    lock(registryLock);
#endif
    if
    :: found != NONE -> uses[found]++; unlock(registryLock)
    :: found == NONE -> unlock(registryLock); found = DEFAULT; beginUse(DEFAULT) /* useDefault */
    fi
}

#include "operations.pml"

/* LOCALDB_HANDLER::~LOCALDB_HANDLER, releaseDatabase */
inline destroy(d) {
    lock(mutex[d]);
    if
    :: state[d] != WRITING -> use(d, false); state[d] = UNINITIALIZED
    :: state[d] == WRITING
    fi;
    unlock(mutex[d]);
    d_step { alive[d] = false; assert(empty(waiters[d]) && claim[d] == 0 && users[d] == 0) }
}

inline cloneNewDB() {
    if
    :: entry != NONE
    :: atomic { entry == NONE -> /* isRegistered */
          if
          :: !alive[1] -> d = 1
          :: !alive[2] -> d = 2
          :: else -> d = NONE /* the model has no more addresses */
          fi;
          if
          :: d != NONE -> alive[d] = true; document[d] = true; state[d] = ACCESSIBLE
          :: else
          fi
       }
       if
       :: d != NONE ->
          lock(registryLock); /* add */
          if
          :: entry == NONE -> atomic {
                entry = d;
                for (i : 1 .. THREADS) { isReplaced[i] = isReplaced[i] || target[i] == d }
                i = 0
             }
             unlock(registryLock)
          :: entry != NONE -> unlock(registryLock); destroy(d)
          fi
       :: d == NONE
       fi
    fi
}

inline isIdle(d) {
    assert(isAlive(d));
    idle = false;
    if
    :: uses[d] == 0 ->
#if FAULT == 7 /* looks at no mutex */
       idle = true
#else
       lock(handOver); /* isUnlocked */
       if
       :: atomic { mutex[d] == NOBODY -> mutex[d] = _pid }; unlock(mutex[d]); idle = true
       :: mutex[d] != NOBODY
       fi;
       unlock(handOver)
#endif
    :: uses[d] != 0
    fi
}

/* Sets d to the controller to be deleted, if it is this removal that does it. */
inline removeWhenIdle() {
    lock(registryLock);
    d = entry;
    removal[_pid] = entry;
    target[_pid] = entry;
    do
    :: d != NONE && entry == d && removal[_pid] == d ->
       isIdle(d);
       if
       :: idle ->
          assert(!isReplaced[_pid]);
          entry = NONE;
          atomic { /* endRemovals */
              assert(uses[d] == 0 || FAULT != 0);
              for (i : 1 .. THREADS) {
                  if
                  :: removal[i] == d && (FAULT != 8 || i == _pid) -> removal[i] = NONE
                  :: else
                  fi
              }
              i = 0
          }
          break
       :: !idle -> fallAsleep(USE_ENDED, registryLock); wakeUp(registryLock)
       fi
    :: d == NONE || entry != d || removal[_pid] != d -> d = NONE; break
    od;
    atomic { target[_pid] = NONE; isReplaced[_pid] = false }
    unlock(registryLock);
    lock(registryLock); /* ControllerUse::~ControllerUse */
    if
    :: removal[_pid] != NONE -> removal[_pid] = NONE; notifyUseEnded()
    :: removal[_pid] == NONE
    fi;
    unlock(registryLock)
}

proctype thread() {
    OPERATION_VARIABLES;
    byte i, found;
    bool idle;
    do
    :: round < OPERATIONS ->
       round++;
       if
       :: find(d);
          lockDbObject(d);
          endUse(d);
          if
          :: isLocked[d] ->
             if /* saveDbObject looks the key up again */
             :: d == DEFAULT -> beginUse(d)
             :: d != DEFAULT -> find(found); assert(found == d)
             fi;
             saveDbObject(d);
             endUse(d)
          :: !isLocked[d]
          fi
       :: find(d);
          lockForTransaction(d);
          endUse(d);
          if
          :: isLocked[d] ->
             use(d, true); /* by the program */
             if
             :: true ->
                beginUse(d); /* LocalDbTransaction.cpp, release */
                releaseClaim(d);
                assert(isReleased[d]);
                saveOrKeep(d);
                endRelease(d);
                endUse(d)
             :: d != DEFAULT -> /* a plain save within its scope; then the controller may be removed */
                find(found);
                assert(found == d);
                saveDbObject(d);
                endUse(d);
                beginUse(d);
                releaseClaim(d);
                assert(!isReleased[d]);
                endUse(d)
             fi;
             isLocked[d] = false
          :: !isLocked[d]
          fi
       :: cloneNewDB()
       :: removeWhenIdle();
          if
          :: d != NONE -> destroy(d)
          :: d == NONE
          fi
       fi;
       d = 0;
       found = 0;
       idle = false
    :: round == OPERATIONS -> break
    od
}

init {
    byte i;
    atomic {
        alive[DEFAULT] = true;
        alive[1] = true;
        for (i : 1 .. THREADS) { run thread() }
    }
    _nr_pr == 1 -> /* at the end, no controller is lost */
    assert(alive[DEFAULT] && alive[1] == (entry == 1) && alive[2] == (entry == 2))
}
