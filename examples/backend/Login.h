// Logging in, with the lock-out of addresses that guess.
#ifndef BACKEND_LOGIN_H
#define BACKEND_LOGIN_H

#include <mutex>
#include <optional>
#include <string>

#include "Reply.h"
#include "Sessions.h"

class Login {
  public:
    explicit Login(Sessions& sessions);

    // The body is a GATEWAY_LOGIN_REQ, the answer a GATEWAY_LOGIN_RESP. 401 for a wrong password, an
    // unknown user and one who is disabled, alike. 429 with the minutes to wait once an address is
    // locked out, whatever password comes then. Every attempt is recorded before the password is
    // looked at, and one attempt at a time: guessing in parallel gains nothing, and when an attempt
    // cannot be recorded, nobody gets in (503). A success erases the record of the address, but for
    // what was guessed at other users. Addresses of IPv6 count by their network of 64 bits.
    Reply attempt(std::string const& address, std::string const& body);

    struct User {
        bool isKnown = false;
        bool isEnabled = false;
        std::string role;
        std::string password;  // hashed
    };

  private:
    std::optional<Reply> verify(std::string const& address, std::string const& name,
                                std::string const& password, User& user);

    Sessions& sessions_;
    bool const records_;  // brute-force prevention is on
    std::mutex oneAtATime_;
};

#endif
