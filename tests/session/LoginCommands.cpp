// Commands of golden sessions: the login record, with a clock that the session sets.
#include <time.h>

#include "BELoginRecord.h"
#include "Session.h"

namespace {

time_t now = 0;  // the time that the library sees; 0 for the real one

void showAttempts(Call& c) {
    LoginAttemptInfo const info = BELoginRecord::getAttempt(c.word(1));
    c.result = std::to_string(info.attempts) + " attempts, " + std::to_string(info.lockMinutes) +
               " minutes";
}

// Writes a record of one client, with these attempts and this last attempt, and reads it.
void showLockout(Call& c) {
    std::string const client = "[{\"ipAddress\":\"a\",\"attempts\":" + c.words[1] +
                               ",\"lastAttempt\":" + c.words[2] + "}]";
    TempDir::write(".loginrecord.cfg", client);
    c.words[1] = "a";
    showAttempts(c);
}

void start(Call&) {
    IntendedLeaks const record;  // of one that is not an array
    BELoginRecord::init();
}

}  // namespace

Commands const LOGIN_COMMANDS = {
    {"clock", [](Call& c) { now = static_cast<time_t>(c.number(1)); }},
    {"start-record", start},
    {"stop-record", [](Call&) { BELoginRecord::deinit(); }},
    {"running", [](Call& c) { c.answer(BELoginRecord::isRunning); }},
    {"attempt",
     [](Call& c) {
         IntendedLeaks const bad;
         c.answer(BELoginRecord::setAttempt(c.word(1)));
     }},
    {"attempts",
     [](Call& c) {
         IntendedLeaks const bad;
         showAttempts(c);
     }},
    {"erase",
     [](Call& c) {
         IntendedLeaks const bad;
         c.answer(BELoginRecord::eraseAttempt(c.word(1)));
     }},
    {"lockout", showLockout},
};

extern "C" time_t __real_time(time_t* out);
extern "C" time_t __wrap_time(time_t* out);
time_t __wrap_time(time_t* out) { return now != 0 ? now : __real_time(out); }
