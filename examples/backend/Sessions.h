// The sessions of logged-in users.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

// One logged-in user. In multi-database mode a session has a controller of its own, which lives as
// long as the session or the last request that uses it. The session reads each database in there until
// it has to see a newer version: from then on it reads that database as all others do.
struct Session {
    Session(std::string name, std::string itsRole, std::string key, bool mustChange = false);
    ~Session();
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    bool isAdministrator() const { return role == "administrator"; }
    bool hasDatabase() const { return databaseKey != "default"; }

    // Whether it reads the database of an API type in its own controller, and that it no longer does.
    // Safe from any thread.
    bool seesOwn(unsigned int type) const { return hasDatabase() && (renewed_ >> type & 1U) == 0; }
    void seeSaved(unsigned int type) const { renewed_ |= 1U << type; }

    std::string const user;
    std::string const role;
    std::string const databaseKey;  // of its controller

    // Until the user has a new password, it may do nothing else than set one.
    std::atomic<bool> mutable mustChangePassword;

    // Both for Sessions, one thread at a time.
    bool isExpired() const;
    void use() const { lastUse_ = Clock::now(); }

  private:
    typedef std::chrono::steady_clock Clock;

    Clock::time_point mutable lastUse_ = Clock::now();
    std::atomic<unsigned int> mutable renewed_ = 0;  // a bit for each API type
};
typedef std::shared_ptr<Session const> SessionRef;

// The header that gives a page the token, or takes it away when that is empty.
std::pair<std::string, std::string> sessionCookie(std::string const& token);

// A session ends by logging out, and BEConfig::AUTH_EXPIRATION seconds after its last request. Safe from any thread.
class Sessions {
  public:
    // The token of a new session; empty when there are too many, or no random numbers. Earlier
    // sessions of the user end, unless BEConfig::DUPLICATE_LOGIN_ENABLE is "1".
    std::string open(std::string const& user, std::string const& role, bool mustChangePassword);

    SessionRef find(std::string const& token);  // null for a token that is unknown or expired
    void close(std::string const& token);
    void closeOthers(Session const& session);  // of its user
    void closeExpired();                       // frees what they hold

  private:
    template <typename Condition>
    void endThose(Condition const& condition);

    std::map<std::string, SessionRef> entries_;  // by the keyed hash of the token
    std::mutex mutex_;
};
