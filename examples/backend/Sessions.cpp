// Opens, finds and ends sessions.
#include "Sessions.h"

#include <BEConfig.h>
#include <LocalDbCtrl.h>

#include <algorithm>

#include "Limits.h"
#include "Password.h"

Session::Session(std::string name, std::string itsRole, std::string key, bool mustChange)
    : user(std::move(name)),
      role(std::move(itsRole)),
      databaseKey(std::move(key)),
      mustChangePassword(mustChange) {
    if (hasDatabase()) {
        LocalDbCtrl::cloneNewDB(databaseKey.c_str());
    }
}

Session::~Session() {
    if (hasDatabase()) {
        LocalDbCtrl::removeDB(databaseKey.c_str());
    }
}

std::pair<std::string, std::string> sessionCookie(std::string const& token) {
    return {"Set-Cookie", "session=" + token + "; Path=/; HttpOnly; SameSite=Strict" +
                              (token.empty() ? "; Max-Age=0" : "") +
                              (BEConfig::ENABLE_HTTPS != 0 ? "; Secure" : "")};
}

bool Session::isExpired() const {
    return Clock::now() - lastUse_ > std::chrono::seconds(BEConfig::AUTH_EXPIRATION);
}

// Does not allocate. The sessions are destroyed after the mutex is released, because removing a controller may wait for a
// save.
template <typename Condition>
void Sessions::endThose(Condition const& condition) {
    decltype(entries_) ended;
    std::lock_guard<std::mutex> const guard(mutex_);
    for (auto next = entries_.begin(); next != entries_.end();) {
        if (auto const entry = next++; condition(*entry)) {
            ended.insert(entries_.extract(entry));
        }
    }
}

void Sessions::closeExpired() {
    endThose([](auto const& entry) { return entry.second->isExpired(); });
}

std::string Sessions::open(std::string const& user, std::string const& role,
                           bool mustChangePassword) {
    std::string token = randomToken();
    if (token.empty()) {
        return token;
    }
    bool const oneOnly = BEConfig::DUPLICATE_LOGIN_ENABLE != "1";
    endThose([&](auto const& entry) {
        return entry.second->isExpired() || (oneOnly && entry.second->user == user);
    });
    std::string const id = keyedHash(BEConfig::AUTH_SECRET_STR, token);
    auto const session = std::make_shared<Session const>(
        user, role, BEConfig::MULTIDB_MODE_ENABLE != 0 ? "session-" + id : "default",
        mustChangePassword);
    std::lock_guard<std::mutex> const guard(mutex_);
    auto const ofUser = std::ranges::count_if(
        entries_, [&](auto const& entry) { return entry.second->user == user; });
    if (entries_.size() >= MAX_SESSIONS || ofUser >= MAX_SESSIONS_OF_ONE) {
        return "";
    }
    entries_[id] = session;
    return token;
}

SessionRef Sessions::find(std::string const& token) {
    std::string const id = keyedHash(BEConfig::AUTH_SECRET_STR, token);
    std::lock_guard<std::mutex> const guard(mutex_);
    auto const entry = entries_.find(id);
    if (entry == entries_.end() || entry->second->isExpired()) {
        return nullptr;
    }
    entry->second->use();
    return entry->second;
}

void Sessions::close(std::string const& token) {
    std::string const id = keyedHash(BEConfig::AUTH_SECRET_STR, token);
    endThose([&](auto const& entry) { return entry.first == id; });
}

void Sessions::closeOthers(Session const& session) {
    endThose([&](auto const& entry) {
        return entry.second->user == session.user && entry.second.get() != &session;
    });
}
