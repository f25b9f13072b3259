/// \file
/// Counts login attempts per client address and computes the lock-out.
///
/// The record is the JSON file ".loginrecord.cfg" in the working directory of the process; every
/// start empties it. From the tenth attempt on, an address is locked out: for 1 minute after 10
/// attempts and for 2 minutes more after each further one, counted from its last attempt.
///
/// An attempt can also be counted for what it was aimed at, its subject: a user name. Then a
/// success takes back what the client tried at that user, and nothing else. Otherwise a client with
/// one account could guess at another for ever, and log in between:
///
/// \code{.cpp}
/// std::string const subject = isKnown ? name : "";  // one subject for all unknown names
/// if (BELoginRecord::getAttempt(client).lockMinutes != 0) {
///     return refuse(429);
/// }
/// if (!BELoginRecord::setAttemptAt(client, subject.c_str())) {
///     return refuse(503);
/// }
/// if (passwordMatches(name, password)) {
///     BELoginRecord::eraseAttemptAt(client, subject.c_str());
/// }
/// \endcode
///
/// The file is replaced as a whole: a reader never sees half of it, and a killed process does not
/// leave half of it. It is not synced. An existing file that the effective user may not write is
/// left alone, and that counts as a failed write.
///
/// A record file that cannot be read, or does not hold an array, is logged and stops the record:
/// isRunning becomes false, and from then on every operation returns its failure result, silently,
/// until init is called again.
///
/// Threads: init and deinit write the file without the lock: call them while no other thread is in
/// any of these functions. The others may be called from any thread at any time.
#ifndef VOBIUTILS_BELOGINRECORD_H
#define VOBIUTILS_BELOGINRECORD_H

#include <pthread.h>

#pragma GCC visibility push(default)

/// What is known of a client address.
struct LoginAttemptInfo {
    int attempts;              ///< since the last erase; 1 when the address is not recorded
    unsigned int lockMinutes;  ///< whole minutes the client must still wait; 0 when it may try
};

/// \copydoc BELoginRecord.h
class BELoginRecord {
  public:
    /// Writes an empty record and starts it. Called by BEConfig::init when brute-force prevention
    /// is on. When the record is running already, it only logs a warning. Failures (no memory, a
    /// file that cannot be written, no mutex) are reported on standard output and leave the record
    /// stopped.
    static void init();

    /// Writes an empty record, reporting on standard output. Does not stop the record.
    static void deinit();

    /// Counts one attempt of `ipAddress` now. True when it was counted and the file written; false
    /// for a null address, a stopped record or a failed write.
    static bool setAttempt(char const* ipAddress);

    /// The attempts of `ipAddress` and the minutes left of its lock-out: 1 and 0 for an address
    /// that is not recorded, a null address and a stopped record.
    static LoginAttemptInfo getAttempt(char const* ipAddress);

    /// Sets the attempts of `ipAddress` to 0, after a successful login. True when the address was
    /// recorded and the file written; false otherwise, and then the file is left as it was.
    static bool eraseAttempt(char const* ipAddress);

    /// Counts one attempt of `ipAddress` now, as setAttempt, and one of that client at `subject`,
    /// in one write of the file. The latter is an element of its own, whose address is `ipAddress`,
    /// a space and the subject; getAttempt answers for it under that name. False also for a null
    /// subject, and for an address with a space in it. Pass the names of existing users only, and
    /// one subject for all others: each makes an element.
    static bool setAttemptAt(char const* ipAddress, char const* subject);

    /// Takes the attempts of `ipAddress` at `subject` back from those of the client, after a
    /// successful login, and forgets them, in one write of the file. True when there were any and
    /// the file is written; false otherwise, and then the file is left as it was. After
    /// eraseAttempt, the attempts of the client at any subject count no longer, either.
    static bool eraseAttemptAt(char const* ipAddress, char const* subject);

    /// Bounds the record to `maximum` elements, two at least; 0, the default, is no bound. An
    /// attempt that would exceed it first removes others: elements that are not clients, then the
    /// oldest that is not locked out, then the one whose lock-out ends first. Without a bound,
    /// every address that ever tried stays in the file until the next start, and each attempt
    /// writes all of them.
    static void setMaximum(unsigned int maximum);

    static bool isRunning;  ///< the record has been started and its file has been valid so far
    static pthread_mutex_t lock;  ///< held during each read, change and write of the file
};

#pragma GCC visibility pop

#endif
