// The sessions of logged-in users.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

// One logged-in user. In multi-database mode a session has its own controller, which is removed with the last reference
// to the session. The session reads a database in that controller until it has to see a newer version; from then on it
// reads that database as it is saved.
struct Session {
    Session(std::string name, std::string itsRole, std::string key, bool mustChange = false);
    ~Session();
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    bool isAdministrator() const { return role == "administrator"; }
    bool hasDatabase() const { return databaseKey != "default"; }

    // seesOwn() returns whether the session reads the database of an API type in its own controller; seeSaved() ends
    // that. Safe from any thread.
    bool seesOwn(unsigned int type) const { return hasDatabase() && (renewed_ >> type & 1U) == 0; }
    void seeSaved(unsigned int type) const { renewed_ |= 1U << type; }

    std::string const user;
    std::string const role;
    std::string const databaseKey;  // of its controller

    // While true, the user may only set a new password.
    std::atomic<bool> mutable mustChangePassword;

    // For Sessions, which calls them from one thread at a time.
    bool isExpired() const;
    void use() const { lastUse_ = Clock::now(); }

  private:
    typedef std::chrono::steady_clock Clock;

    Clock::time_point mutable lastUse_ = Clock::now();
    std::atomic<unsigned int> mutable renewed_ = 0;  // a bit for each API type
};
typedef std::shared_ptr<Session const> SessionRef;

// Returns the header that sets the session's cookie, or removes it if the token is empty.
std::pair<std::string, std::string> sessionCookie(std::string const& token);

// A session ends at logout, or BEConfig::AUTH_EXPIRATION seconds after its last request. Safe from any thread.
class Sessions {
  public:
    // Opens a session and returns its token; empty if there are too many sessions, or no random numbers. Ends the user's
    // earlier sessions unless BEConfig::DUPLICATE_LOGIN_ENABLE is "1".
    std::string open(std::string const& user, std::string const& role, bool mustChangePassword);

    SessionRef find(std::string const& token);  // null if unknown or expired
    void close(std::string const& token);
    void closeOthers(Session const& session);  // of its user
    void closeExpired();                       // frees their controllers

  private:
    template <typename Condition>
    void endThose(Condition const& condition);

    std::map<std::string, SessionRef> entries_;  // by keyedHash of the token
    std::mutex mutex_;
};
