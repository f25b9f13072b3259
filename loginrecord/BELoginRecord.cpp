// Counts login attempts per client address: the public operations, on the record file and the
// lock-out.
//
// Every operation locks the mutex, reads the whole file, looks up the client and, where something
// changed, writes the whole file. Nothing is kept in memory between two calls.
#include "BELoginRecord.h"

#include <stdio.h>
#include <string.h>
#include <time.h>

#include <atomic>

#include "logging/Log.h"
#include "logging/MutexGuard.h"
#include "loginrecord/Lockout.h"
#include "loginrecord/RecordFile.h"

using namespace vobiutils;

bool BELoginRecord::isRunning = false;
pthread_mutex_t BELoginRecord::lock = PTHREAD_MUTEX_INITIALIZER;

namespace {

LoginAttemptInfo const UNKNOWN_CLIENT = {1, 0};

std::atomic<unsigned int> maximumElements = 0;  // 0: no bound

// isRunning is public and a plain bool, and it is tested before the lock is acquired: hence
// atomic_ref.
bool running() {
    return std::atomic_ref<bool>(BELoginRecord::isRunning).load(std::memory_order_acquire);
}

void setRunning(bool value) {
    std::atomic_ref<bool>(BELoginRecord::isRunning).store(value, std::memory_order_release);
}

// Only the first start initializes the mutex. After a bad record file the record may be started
// again while threads still wait for the mutex.
bool initializeLock() {
    static bool initialized = false;
    initialized = initialized || pthread_mutex_init(&BELoginRecord::lock, nullptr) == 0;
    return initialized;
}

bool accepts(char const* ipAddress) {
    if (ipAddress == nullptr) {
        UTIL_ERROR("Null ipaddress\n");
        return false;
    }
    return running();
}

bool stop() {
    setRunning(false);
    return false;
}

// False for a file that is unreadable or ill-formed; that also stops the record.
bool isUsable(RecordFile const& record) {
    if (!record.isReadable()) {
        UTIL_ERROR("Cannot access Database file\n");
        return stop();
    }
    if (!record.isWellFormed()) {
        UTIL_ERROR("File has wrong format\n");
        return stop();
    }
    return true;
}

uint64_t currentTime() { return static_cast<uint64_t>(time(nullptr)); }

// Adds unsigned: a forged record wraps around instead of being undefined behaviour.
int oneMore(int attempts) { return static_cast<int>(static_cast<unsigned int>(attempts) + 1U); }

// If there is no room for a new element, another one goes, but not the client's own.
bool countAttempt(RecordFile& record, char const* ipAddress, char const* subject = nullptr) {
    json_object* const client = record.find(ipAddress, subject);
    if (client == nullptr) {
        unsigned int const maximum = maximumElements;
        if (maximum != 0) {
            record.makeRoom(maximum, record.find(ipAddress), currentTime());
        }
        return record.append(ipAddress, subject, currentTime());
    }
    return setAttempts(client, oneMore(attemptsOf(client))) &&
           setLastAttempt(client, currentTime());
}

// A client without attempts has none at any subject: what is left of them is from before its element
// was erased or made room for another one.
bool countBoth(RecordFile& record, char const* ipAddress, char const* subject) {
    json_object* const client = record.find(ipAddress);
    if (client == nullptr || attemptsOf(client) == 0) {
        record.removeSubjects(ipAddress);
    }
    return countAttempt(record, ipAddress) && countAttempt(record, ipAddress, subject);
}

bool eraseClient(RecordFile& record, char const* ipAddress, char const*) {
    json_object* const client = record.find(ipAddress);
    return client != nullptr && setAttempts(client, 0);
}

// Never below 0, whatever a forged record says.
bool takeBack(RecordFile& record, char const* ipAddress, int taken) {
    json_object* const client = record.find(ipAddress);
    int const attempts = client != nullptr ? attemptsOf(client) : 0;
    int const left = taken < 0 ? attempts : attempts > taken ? attempts - taken : 0;
    return client == nullptr || setAttempts(client, left);
}

bool eraseSubject(RecordFile& record, char const* ipAddress, char const* subject) {
    json_object* const client = record.find(ipAddress, subject);
    if (client == nullptr || !takeBack(record, ipAddress, attemptsOf(client))) {
        return false;
    }
    record.removeSubjects(ipAddress, subject);
    return true;
}

// Saves what `action` makes of the record, unless it returns false.
bool change(bool (*action)(RecordFile&, char const*, char const*), char const* ipAddress,
            char const* subject = nullptr) {
    if (!accepts(ipAddress)) {
        return false;
    }
    MutexGuard const guard(BELoginRecord::lock);
    RecordFile record;
    return isUsable(record) && action(record, ipAddress, subject) && record.save();
}

// A space in the address of a client would make it end earlier.
bool changeAt(bool (*action)(RecordFile&, char const*, char const*), char const* ipAddress,
              char const* subject) {
    bool const canBeJoined =
        ipAddress == nullptr || (subject != nullptr && strchr(ipAddress, ' ') == nullptr);
    return canBeJoined && change(action, ipAddress, subject);
}

unsigned int lockMinutesOf(json_object* client, int attempts) {
    unsigned int const length = lockoutMinutes(attempts);
    if (length == 0) {
        return 0;
    }
    if (!hasLastAttempt(client)) {
        UTIL_ERROR("Something error occurred\n");
        return length;
    }
    return minutesLeft(length, lastAttemptOf(client), currentTime());
}

}  // namespace

void BELoginRecord::init() {
    if (running()) {
        UTIL_WARN("The process is running\n");
        return;
    }
    json_object* const empty = json_object_new_array();
    if (empty == nullptr) {
        puts("Process cannot start due to memory error");
        return;
    }
    if (!RecordFile::write(empty)) {
        puts("Fail to create record file");
        return;  // intended leak: the array
    }
    printf("%s: new record file is created\n", "init");
    if (!initializeLock()) {
        puts("Login Record init fail ");
        json_object_put(empty);
        return;
    }
    {
        MutexGuard const guard(lock);
        setRunning(true);
    }
    json_object_put(empty);
}

void BELoginRecord::deinit() {
    json_object* const empty = json_object_new_array();
    if (empty == nullptr) {
        return;
    }
    if (RecordFile::write(empty)) {
        printf("%s: erased record file\n", "deinit");
    } else {
        puts("Fail to create record file");
    }
    json_object_put(empty);
}

bool BELoginRecord::setAttempt(char const* ipAddress) { return change(countAttempt, ipAddress); }

LoginAttemptInfo BELoginRecord::getAttempt(char const* ipAddress) {
    if (!accepts(ipAddress)) {
        return UNKNOWN_CLIENT;
    }
    MutexGuard const guard(lock);
    RecordFile const record;
    json_object* const client = isUsable(record) ? record.find(ipAddress) : nullptr;
    if (client == nullptr) {
        return UNKNOWN_CLIENT;
    }
    int const attempts = attemptsOf(client);
    return {attempts, lockMinutesOf(client, attempts)};
}

bool BELoginRecord::eraseAttempt(char const* ipAddress) { return change(eraseClient, ipAddress); }

bool BELoginRecord::setAttemptAt(char const* ipAddress, char const* subject) {
    return changeAt(countBoth, ipAddress, subject);
}

bool BELoginRecord::eraseAttemptAt(char const* ipAddress, char const* subject) {
    return changeAt(eraseSubject, ipAddress, subject);
}

void BELoginRecord::setMaximum(unsigned int maximum) {
    maximumElements = maximum == 1 ? 2 : maximum;  // a client and what it tries
}
