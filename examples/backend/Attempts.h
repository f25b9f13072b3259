// Counts login attempts, and locks out clients that guess: in the library's record, and in memory what
// cannot be written there, as when the disk is full.
#ifndef BACKEND_ATTEMPTS_H
#define BACKEND_ATTEMPTS_H

#include <chrono>
#include <map>
#include <string>
#include <utility>

// Not safe from several threads.
class Attempts {
  public:
    Attempts();

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

    bool const counts_;  // brute-force prevention is on
    std::map<std::pair<std::string, std::string>, Unwritten> unwritten_;  // by client and user
};

#endif
