// Counts login attempts in the login record, or in memory while the record cannot be written.
#include <BELoginRecord.h>
#include <Logger.h>

#include <algorithm>

#include "Limits.h"
#include "Login.h"

namespace {

// As in the library's record, the lock-out begins with the tenth attempt.
int lockedMinutes(int attempts) { return attempts < 10 ? 0 : 1 + 2 * (attempts - 10); }

}  // namespace

Attempts::Attempts(bool areCounted) : areCounted_(areCounted) {
    BELoginRecord::setMaximum(MAX_CLIENTS);
}

unsigned int Attempts::lockMinutes(std::string const& client) const {
    LoginAttemptInfo const recorded = BELoginRecord::getAttempt(client.c_str());
    int attempts = recorded.attempts > 1 ? recorded.attempts : 0;  // 1 is also returned for none
    Clock::time_point last;
    for (auto const& [key, unwritten] : unwritten_) {
        if (key.first == client) {
            attempts += unwritten.attempts;
            last = std::max(last, unwritten.last);
        }
    }
    if (last == Clock::time_point()) {
        return recorded.lockMinutes;
    }
    auto const end = last + std::chrono::minutes(lockedMinutes(attempts));
    auto const left = std::chrono::ceil<std::chrono::minutes>(end - Clock::now()).count();
    return std::max(recorded.lockMinutes, static_cast<unsigned int>(std::max<int64_t>(left, 0)));
}

void Attempts::count(std::string const& client, std::string const& user) {
    if (!areCounted_ || BELoginRecord::setAttemptAt(client.c_str(), user.c_str())) {
        return;
    }
    Logger::print(LOG_TYPE_ERROR, LOG_GROUP_APIV1_GATEWAY,
                  "a login attempt cannot be recorded, and is counted in memory\n");
    Unwritten& unwritten = unwritten_[{client, user}];
    ++unwritten.attempts;
    unwritten.last = Clock::now();
    if (unwritten_.size() > MAX_UNWRITTEN) {
        unwritten_.erase(std::ranges::min_element(
            unwritten_, {}, [](auto const& entry) { return entry.second.last; }));
    }
}

void Attempts::forgive(std::string const& client, std::string const& user) {
    BELoginRecord::eraseAttemptAt(client.c_str(), user.c_str());
    unwritten_.erase({client, user});
}
