/* localdb/DatabaseLock.cpp. Each inline has the name of the function it stands for; a database is the index
   of its mutex. isAlive(d): its controller exists. */

#define UNINITIALIZED 0
#define ACCESSIBLE 1
#define WRITING 2
#define RELEASED 1 /* a condition */

byte handOver = NOBODY;
byte mutex[DATABASES] = NOBODY;
byte state[DATABASES];
bool document[DATABASES];               /* is in memory */
byte users[DATABASES];                  /* threads that use or destroy the document at this moment */
chan waiters[DATABASES] = [THREADS] of { byte };
byte claim[DATABASES];                  /* the thread whose claim is in the chain; 0: none */
bool holds[THREADS * DATABASES + DATABASES]; /* Claim::holds_ */

#define idleState(d)   (document[d] -> ACCESSIBLE : UNINITIALIZED)
#define HELD(d)        holds[_pid * DATABASES + d]
#define isFirst(d)     waiters[d]?[eval(_pid)]

/* One writer, and nobody sees a document that is being destroyed. */
inline use(d, newDocument) {
    d_step { users[d]++; assert(isAlive(d)); assert(users[d] == 1) }
    d_step { document[d] = newDocument; users[d]-- }
}

/* The caller of the next four holds handOver. */
inline wakeFirstWaiter(d) {
    if
    :: atomic { waiters[d]?<sleeper> -> sleepsOn[sleeper] = AWAKE; sleeper = 0 }
    :: empty(waiters[d])
    fi
}

inline tryAcquire(d) {
    assert(isAlive(d));
    if
    :: atomic { mutex[d] == NOBODY -> mutex[d] = _pid }
       if
#if FAULT == 1 /* takes a free mutex to be enough */
       :: acquired = true
#else
       :: state[d] != WRITING -> acquired = true
       :: state[d] == WRITING -> unlock(mutex[d])
#endif
       fi
    :: mutex[d] != NOBODY
    fi
}

inline waitFor(d, hasDeadline) {
    waiters[d]!_pid;
    inTime = true;
    do
    :: !acquired && inTime ->
       fallAsleep(RELEASED, handOver);
       if
       :: wakeUp(handOver)
       :: hasDeadline -> passDeadline(handOver); inTime = false
       fi;
#if FAULT == 12 /* tries although others have waited longer */
       tryAcquire(d)
#else
       if
       :: isFirst(d) -> tryAcquire(d)
       :: !isFirst(d)
       fi
#endif
    :: acquired || !inTime -> break
    od;
    assert(!acquired || isFirst(d)); /* in the order in which they came */
    waiters[d]??eval(_pid)
}

inline freeMutex(d) {
    assert(isAlive(d));
    if /* pthread_mutex_trylock */
    :: atomic { mutex[d] == NOBODY -> mutex[d] = _pid }
    :: mutex[d] != NOBODY
    fi;
    unlock(mutex[d]);
    wakeFirstWaiter(d)
}

inline acquire(d, hasDeadline) {
    lock(handOver);
    acquired = false;
    if
#if FAULT == 2 /* overtakes those who wait */
    :: tryAcquire(d)
#else
    :: empty(waiters[d]) -> tryAcquire(d)
    :: nempty(waiters[d])
#endif
    fi;
    if
    :: acquired -> assert(empty(waiters[d]))
    :: !acquired -> waitFor(d, hasDeadline)
    fi;
    unlock(handOver)
}

inline release(d) {
    lock(handOver);
    if
    :: claim[d] != 0 -> holds[claim[d] * DATABASES + d] = false; claim[d] = 0
    :: claim[d] == 0
    fi;
    freeMutex(d);
    unlock(handOver)
}

inline endWriting(d) {
    lock(handOver);
    assert(isAlive(d));
    state[d] = idleState(d);
#if FAULT != 3 /* leaves those asleep who came while the document was saved */
    wakeFirstWaiter(d);
#endif
    unlock(handOver)
}

/* Claim::Claim */
inline beginClaim(d) {
    lock(handOver);
    assert(claim[d] == 0);
    claim[d] = _pid;
    HELD(d) = true;
    unlock(handOver)
}

/* Claim::release */
inline releaseClaim(d) {
    lock(handOver);
#if FAULT == 4 /* releases what a plain save has released already */
    if
    :: true ->
#else
    if
    :: HELD(d) ->
#endif
       claim[d] = 0;
       HELD(d) = false;
       state[d] = WRITING;
       freeMutex(d);
       isReleased[d] = true
    :: !HELD(d) -> isReleased[d] = false
    fi;
    unlock(handOver)
}
