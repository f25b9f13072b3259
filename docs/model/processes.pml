/* THREADS threads in two processes, each with a controller of its own, in which it locks the database of one type
   OPERATIONS times, and so takes the lock of the type's side file (localdb/ProcessLock.cpp). The first process is
   killed at some moment. flock belongs to the open file, which duplicated descriptors share. */
#define NONE 255
#define PROCESSES 2
#define CONTROLLERS (THREADS / PROCESSES)
#define process(thread) ((thread - 1) / CONTROLLERS)
#include "pthread.pml"

byte chainLock[PROCESSES] = NOBODY;
bool held[THREADS + 1];           /* by _pid: is in the chain of the process */
byte file[THREADS + 1] = NONE;    /* the open file of the descriptor */
byte descriptors[THREADS + 1];    /* by open file */
byte owner = NONE;                /* the open file that has the lock */
byte users[PROCESSES];            /* threads that have what acquire has given */
bool isKilled[PROCESSES];

inline openFile() {
    d_step {
        i = 0;
        do
        :: descriptors[i] > 0 -> i++
        :: else -> break
        od;
        file[_pid] = i;
        descriptors[i] = 1;
        i = 0
    }
}

inline closeFile(thread) {
    d_step {
        descriptors[file[thread]]--;
        owner = (descriptors[file[thread]] == 0 && owner == file[thread] -> NONE : owner);
        file[thread] = NONE
    }
}

/* The caller holds the mutex of the chain. What other processes do not see is one step. */
inline findShared() {
    d_step {
        shared = NONE;
        for (i : 1 .. THREADS) {
            if
            :: held[i] && process(i) == process(_pid) && i != _pid -> shared = i
            :: else
            fi
        }
        i = 0
    }
}

inline tryAcquire() { /* and ProcessLock::lock */
    atomic { lock(chainLock[process(_pid)]); openFile(); findShared() }
#if FAULT == 14 /* each controller locks for itself */
    shared = NONE;
#endif
    if
    :: shared != NONE -> /* FileDescriptor::duplicate */
       atomic { closeFile(_pid); file[_pid] = file[shared]; descriptors[file[_pid]]++; held[_pid] = true }
    :: shared == NONE ->
       if /* flock, which does not wait */
       :: atomic { owner == NONE -> owner = file[_pid]; held[_pid] = true }
       :: atomic { owner != NONE -> findShared(); assert(shared == NONE); closeFile(_pid) }
       fi
    fi;
    atomic { shared = NONE; unlock(chainLock[process(_pid)]) }
}

/* Leaves held false if the deadline has passed. */
inline acquire() {
    do
    :: !held[_pid] -> tryAcquire()
    :: !held[_pid] || held[_pid] -> break
    od
}

inline release() {
    atomic { lock(chainLock[process(_pid)]); held[_pid] = false; findShared() }
    if
    :: (shared == NONE || FAULT == 13) && owner == file[_pid] -> owner = NONE /* 13: though another controller has it */
    :: else
    fi;
    atomic { closeFile(_pid); shared = NONE; unlock(chainLock[process(_pid)]) }
}

/* One process at a time. */
inline use() {
    d_step {
        users[process(_pid)]++;
        for (i : 0 .. PROCESSES - 1) { assert(i == process(_pid) || users[i] == 0) }
        i = 0
    }
    d_step { assert(owner == file[_pid]); users[process(_pid)]-- }
}

proctype thread() {
    byte round, i, shared = NONE;
    { do
    :: round < OPERATIONS ->
       round++;
       acquire();
       if
       :: held[_pid] -> use(); release()
       :: !held[_pid]
       fi
    :: round == OPERATIONS -> break
    od }
    unless { isKilled[process(_pid)] }
}

proctype killer() {
    byte i;
    atomic { /* the kernel closes its descriptors */
        isKilled[0] = true;
        users[0] = 0;
        for (i : 1 .. CONTROLLERS) {
            held[i] = false;
            if
            :: file[i] != NONE -> closeFile(i)
            :: else
            fi
        }
    }
}

init {
    byte i, count;
    atomic {
        for (i : 1 .. THREADS) { run thread() }
        run killer()
    }
    _nr_pr == 1 -> /* at the end, no file is open, and the lock is free */
    d_step {
        for (i : 0 .. THREADS) { count = count + descriptors[i] }
        assert(count == 0 && owner == NONE)
    }
}
