/* Mutexes and condition variables, as POSIX defines them: a notification that finds no sleeper is lost. */

#define NOBODY 255
#define AWAKE 0
#define lock(mutex)    atomic { mutex == NOBODY -> mutex = _pid }
#define unlock(mutex)  d_step { assert(mutex == _pid); mutex = NOBODY }

byte sleepsOn[THREADS + 1]; /* by _pid: a condition */

/* Condition::wait, without the look that the code takes every tenth of a second: what only this look would
   notice is a lost wake-up, and shows here as a deadlock. */
#define fallAsleep(condition, mutex)  atomic { unlock(mutex); sleepsOn[_pid] = condition }
#define wakeUp(mutex)                 atomic { sleepsOn[_pid] == AWAKE && mutex == NOBODY -> mutex = _pid }
#define passDeadline(mutex)           atomic { mutex == NOBODY -> mutex = _pid; sleepsOn[_pid] = AWAKE }
