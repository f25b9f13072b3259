// Login, the lock-out of clients that guess passwords, and the change of the user's own password.
#pragma once

#include <chrono>
#include <mutex>

#include "Reply.h"

// Counts login attempts and locks out clients that guess. Attempts are kept in the library's login record; those that
// cannot be written, for instance because the disk is full, are kept in memory. For one thread at a time.
class Attempts {
  public:
    // If `areCounted` is false, nothing is counted and no client is locked out.
    explicit Attempts(bool areCounted);

    // Returns the minutes that the client must still wait; 0 if it may try.
    unsigned int lockMinutes(std::string const& client) const;

    // count() adds an attempt by the client at a user ("" for every unknown user); forgive() removes the client's
    // attempts at that user.
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

    // The body is a GATEWAY_LOGIN_REQ; the answer is a GATEWAY_LOGIN_RESP and a cookie with the token. A wrong password,
    // an unknown user and a disabled user all get the same 401. A client that is locked out gets 429 with the minutes to
    // wait, even for the right password. Attempts are counted before the password is checked, and are handled one at a
    // time, so guessing in parallel gains nothing. A successful login removes the client's attempts at this user. All
    // IPv6 addresses of one /64 network count as one client.
    Reply logIn(Request const& request);

    // Ends the session. 204.
    Reply logOut(Request const& request);

    // The body is {"old": ..., "new": ...}. Ends the user's other sessions. 204, or 403 for a wrong old password, which
    // counts as a login attempt.
    Reply changePassword(Request const& request);

  private:
    struct User;
    static User findUser(std::string const& name);

    // Returns the user if the password is right; throws `refusal` if not. The caller holds the lock, and keeps it until
    // the session is open or the new password is stored, so that no other request replaces the password meanwhile.
    User verify(std::string const& address, std::string const& name, std::string const& password,
                Reply const& refusal);

    Sessions& sessions_;
    Attempts attempts_;
    std::mutex oneAtATime_;
};
