// Commands of golden sessions: the login record, with a clock that the session sets.
#include <time.h>

#include "BELoginRecord.h"
#include "Session.h"

namespace {

time_t now = 0;  // the time that the library sees; 0 for the real one

void showAttempts(Call& c) {
    IntendedLeaks const badRecord;
    LoginAttemptInfo const info = BELoginRecord::getAttempt(c.word(1));
    c.result = std::to_string(info.attempts) + " attempts, " + std::to_string(info.lockMinutes) +
               " minutes";
}

void change(Call& c, bool (*ofClient)(char const*), bool (*atSubject)(char const*, char const*)) {
    IntendedLeaks const badRecord;
    c.answer(c.words.size() > 2 ? atSubject(c.word(1), c.word(2)) : ofClient(c.word(1)));
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
    {"attempt", [](Call& c) { change(c, BELoginRecord::setAttempt, BELoginRecord::setAttemptAt); }},
    {"attempts", showAttempts},
    {"erase",
     [](Call& c) { change(c, BELoginRecord::eraseAttempt, BELoginRecord::eraseAttemptAt); }},
    {"maximum", [](Call& c) { BELoginRecord::setMaximum(c.number(1)); }},
};

// time, and its name where a time of 64 bits is new
extern "C" [[gnu::visibility("default")]] time_t __wrap_time(time_t*);
extern "C" [[gnu::visibility("default")]] time_t __wrap___time64(time_t*);
time_t __wrap_time(time_t*) {
    timespec real;
    clock_gettime(CLOCK_REALTIME, &real);
    return now != 0 ? now : real.tv_sec;
}
time_t __wrap___time64(time_t*) { return __wrap_time(nullptr); }
