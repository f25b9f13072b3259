// Counts login attempts in the record, or in memory while that cannot be written.
#include "Attempts.h"

#include <BELoginRecord.h>
#include <Logger.h>

#include <algorithm>

#include "Limits.h"

namespace {

// The minutes of a lock-out are those of the library's record: from the tenth attempt on.
int lockedMinutes(int attempts) { return attempts < 10 ? 0 : 1 + 2 * (attempts - 10); }

}  // namespace

Attempts::Attempts() : counts_(BELoginRecord::isRunning) { BELoginRecord::setMaximum(MAX_CLIENTS); }

unsigned int Attempts::lockMinutes(std::string const& client) const {
    LoginAttemptInfo const recorded = BELoginRecord::getAttempt(client.c_str());
    int attempts = recorded.attempts > 1 ? recorded.attempts : 0;  // 1 may mean none
    Clock::time_point last = Clock::time_point::min();
    for (Unwritten const& one : unwritten_) {
        if (one.client == client) {
            attempts += one.attempts;
            last = std::max(last, one.last);
        }
    }
    if (last == Clock::time_point::min()) {
        return recorded.lockMinutes;
    }
    auto const end = last + std::chrono::minutes(lockedMinutes(attempts));
    auto const left = std::chrono::ceil<std::chrono::minutes>(end - Clock::now()).count();
    return std::max(recorded.lockMinutes, static_cast<unsigned int>(std::max(left, 0L)));
}

void Attempts::count(std::string const& client, std::string const& user) {
    if (!counts_ || BELoginRecord::setAttemptAt(client.c_str(), user.c_str())) {
        return;
    }
    Logger::print(LOG_TYPE_ERROR, LOG_GROUP_APIV1_GATEWAY,
                  "a login attempt cannot be recorded, and is counted in memory\n");
    auto entry = std::find_if(unwritten_.begin(), unwritten_.end(), [&](Unwritten const& one) {
        return one.client == client && one.user == user;
    });
    if (entry == unwritten_.end()) {
        if (unwritten_.size() >= MAX_UNWRITTEN) {
            unwritten_.erase(std::min_element(unwritten_.begin(), unwritten_.end(),
                                              [](Unwritten const& one, Unwritten const& other) {
                                                  return one.last < other.last;
                                              }));
        }
        entry = unwritten_.insert(unwritten_.end(), {client, user, 0, {}});
    }
    ++entry->attempts;
    entry->last = Clock::now();
}

void Attempts::forgive(std::string const& client, std::string const& user) {
    BELoginRecord::eraseAttemptAt(client.c_str(), user.c_str());
    std::erase_if(unwritten_,
                  [&](Unwritten const& one) { return one.client == client && one.user == user; });
}
