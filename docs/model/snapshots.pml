/* Publication of the documents that snapshots share (localdb/SnapshotStore.cpp, jsondata/FileCache.cpp, Shared.h):
   THREADS threads, each of which takes OPERATIONS times a snapshot or forgets what is kept, while the file is written
   in place CHANGES times. Its identity is the tick of the clock in which it was changed last. (A file that replaces
   another has another inode as long as the other is open, and so another identity.) */
#define NONE 255
#define OBJECTS (2 * THREADS + 1)

byte version, changedAt, now = 1; /* the file */

byte clock, forgottenAt;
byte dropped; /* the clock at the last forget, as the caller knows it */
byte place = NONE; /* FileCache::kept_, for one key */

typedef Kept { byte owners, begunAt, identity, made; bool isRecent };
Kept kept[OBJECTS];
typedef Made { byte owners, version };
Made made[OBJECTS];

#define addMadeOwner(m)  d_step { assert(made[m].owners > 0); made[m].owners++ }
#define addKeptOwner(k)  d_step { assert(kept[k].owners > 0); kept[k].owners++ }

#define removeMadeOwner(m) \
    if \
    :: m != NONE -> \
       assert(made[m].owners > 0); \
       made[m].owners--; \
       made[m].version = (made[m].owners > 0 -> made[m].version : 0) \
    :: else \
    fi

inline removeKeptOwner(k) {
    d_step {
        assert(k == NONE || kept[k].owners > 0);
        if
        :: k != NONE && kept[k].owners > 1 -> kept[k].owners--
        :: k != NONE && kept[k].owners == 1 ->
           kept[k].owners = 0;
           removeMadeOwner(kept[k].made);
           kept[k].begunAt = 0; kept[k].identity = 0; kept[k].made = 0; kept[k].isRecent = false
        :: else
        fi;
        k = NONE
    }
}

/* What is done under the cache's mutex is one step. */
inline share() {
    atomic {
        clock++;
        begunAt = clock;
        if
        :: place != NONE ->
           assert(kept[place].owners > 0 && kept[place].begunAt > dropped);
           if
#if FAULT != 9 /* trusts the identity of a file that was changed just before */
           :: kept[place].isRecent -> recent = place; addKeptOwner(recent)
           :: !kept[place].isRecent &&
#else
           ::
#endif
              kept[place].identity == identity -> mine = kept[place].made;
#if FAULT != 10 /* becomes an owner after the mutex is free */
              addMadeOwner(mine)
#endif
           :: else
           fi
        :: place == NONE
        fi
    }
#if FAULT == 10
    if
    :: mine != NONE -> addMadeOwner(mine)
    :: mine == NONE
    fi
#endif
}

inline make() {
    d_step { /* new Kept: one owner */
        new = 0;
        do
        :: kept[new].owners > 0 -> new++
        :: else -> break
        od;
        kept[new].owners = 1;
        kept[new].begunAt = begunAt;
        kept[new].made = NONE;
        begunAt = 0;
        readAt = now
    }
    d_step { /* FileContent::readOnce, which reads again what is changed meanwhile; Maker::make */
        kept[new].identity = changedAt;
        kept[new].isRecent = (changedAt >= readAt);
        readAt = 0;
        if
        :: recent != NONE && made[kept[recent].made].version == version ->
           mine = kept[recent].made;
           made[mine].owners++
        :: else ->
           mine = 0;
           do
           :: made[mine].owners > 0 -> mine++
           :: else -> break
           od;
           made[mine].owners = 1;
           made[mine].version = version
        fi
    }
    if
    :: d_step { made[mine].owners++; kept[new].made = mine }; keep()
    :: removeKeptOwner(new) /* it never settled, or is too large */
    fi;
    removeKeptOwner(recent)
}

inline keep() {
    d_step {
        if /* 11: keeps what was read before a forget */
        :: FAULT == 11 || kept[new].begunAt > (place != NONE -> kept[place].begunAt : forgottenAt) ->
           last = place; place = new; new = last; last = NONE
        :: else
        fi
    }
    removeKeptOwner(new)
}

inline get() {
    d_step { identity = changedAt; oldest = version } /* stat */
    share();
    if
    :: mine == NONE -> make()
    :: mine != NONE
    fi
}

inline forget() {
    d_step { dropped = clock; forgottenAt = clock; new = place; place = NONE }
    removeKeptOwner(new)
}

proctype thread() {
    byte round, begunAt, identity, oldest, readAt, last = NONE, mine = NONE, new = NONE, recent = NONE;
    do
    :: round < OPERATIONS ->
       round++;
       if
       :: get();
          assert(made[mine].owners > 0 && made[mine].version >= oldest && made[mine].version <= version);
          d_step { removeMadeOwner(mine); mine = NONE }
       :: forget()
       fi;
       d_step { begunAt = 0; identity = 0; oldest = 0 }
    :: round == OPERATIONS -> break
    od
}

proctype writer() {
    do
    :: version < CHANGES -> d_step { version++; changedAt = now }
    :: now <= CHANGES -> now++
    :: version == CHANGES -> break
    od
}

init {
    byte i, count;
    atomic {
        for (i : 1 .. THREADS) { run thread() }
        run writer()
    }
    _nr_pr == 1 -> /* at the end, what is kept is all that is left */
    d_step {
        for (i : 0 .. OBJECTS - 1) { count = count + kept[i].owners + made[i].owners }
        assert(count == (place == NONE -> 0 : 2))
    }
}
