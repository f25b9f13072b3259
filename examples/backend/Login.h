// Logging in, with the lock-out of clients that guess, and the password of one's own.
#pragma once

#include <chrono>
#include <mutex>

#include "Reply.h"

// Counts login attempts, and locks out clients that guess: in the library's record, and in memory what
// cannot be written there, as when the disk is full. Not safe from several threads.
class Attempts {
  public:
    // Whether they are counted at all.
    explicit Attempts(bool areCounted);

    // Minutes that the client must still wait; 0 when it may try.
    unsigned int lockMinutes(std::string const& client) const;

    // Counts an attempt at a user ("" for all unknown ones), and takes those back that it made at one.
    void count(std::string const& client, std::string const& user);
    void forgive(std::string const& client, std::string const& user);

  private:
    typedef std::chrono::steady_clock Clock;
    struct Unwritten {
        int attempts = 0;
        Clock::time_point last;
    };

    bool const areCounted_;
    std::map<std::pair<std::string, std::string>, Unwritten> unwritten_;  // by client and user
};

class Login {
  public:
    Login(Sessions& sessions, bool locksOut) : sessions_(sessions), attempts_(locksOut) {}

    // The body is a GATEWAY_LOGIN_REQ, the answer a GATEWAY_LOGIN_RESP and a cookie with the token. 401 for a
    // wrong password, an unknown user and one who is disabled, alike. 429 with the minutes to wait once a
    // client is locked out, whatever password comes then. Every attempt is counted before the password is
    // looked at, and one attempt at a time: guessing in parallel gains nothing. A success takes back what the
    // client tried at this user. Addresses of IPv6 count by their network of 64 bits.
    Reply logIn(Request const& request);

    // Ends the session. 204.
    Reply logOut(Request const& request);

    // The body is {"old": ..., "new": ...}. 403 for a wrong old password, which counts as an attempt to log in.
    // The user's other sessions end. 204.
    Reply changePassword(Request const& request);

  private:
    struct User;
    static User findUser(std::string const& name);

    // The user, whose password this is. Throws `refusal` when it is not. Under the lock, which is kept until the
    // session is open or the new password stored: a password is not replaced meanwhile.
    User verify(std::string const& address, std::string const& name, std::string const& password,
                Reply const& refusal);

    Sessions& sessions_;
    Attempts attempts_;
    std::mutex oneAtATime_;
};
