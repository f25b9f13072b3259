// The login attempt record: counting, the lock-out, the record file, and files that are no good.
#include <limits.h>
#include <time.h>

#include <regex>

#include "BELoginRecord.h"
#include "Support.h"
#include "loginrecord/Lockout.h"

using namespace vobiutils;

namespace {

using LoginRecordTest = LibraryTest;

bool const INITIALLY_RUNNING = BELoginRecord::isRunning;
char const RECORD[] = ".loginrecord.cfg";
std::string const NO_TIME = "ERROR: Something error occurred\n";
std::string const NO_FILE = "ERROR: Cannot access Database file\n";
std::string const NO_ARRAY = "ERROR: File has wrong format\n";

// What a row of operations, 's'et, 'g'et or 'e'rase, logs, and their results: "1|12 5|0|".
std::string run(std::string const& operations, char const* address = "a") {
    return transcript([&] {
        for (char const operation : operations) {
            if (operation == 'g') {
                LoginAttemptInfo const info = BELoginRecord::getAttempt(address);
                printf("%d %u|", info.attempts, info.lockMinutes);
            } else {
                bool const set = operation == 's';
                printf("%d|", set ? BELoginRecord::setAttempt(address)
                                  : BELoginRecord::eraseAttempt(address));
            }
        }
    });
}

std::string start() {
    BELoginRecord::isRunning = false;
    return transcript(BELoginRecord::init);
}

time_t fixedTime = 0;  // what the library takes for the time; 0 for the true one

// With a blank and a zero in front, which do not count.
std::string ago(long seconds) { return "' 0" + std::to_string(time(nullptr) - seconds) + "'"; }

std::string client(char const* address, char const* attempts, std::string const& last) {
    return std::string("{'ipAddress':'") + address + "','attempts':" + attempts +
           ",'lastAttempt':" + last + "}";
}

// Expects the file to hold `expected` in the pretty form, where NOW stands for any present time: that
// it is the right one shows in the lock-out.
void expectRecord(std::string const& expected) {
    json_object* const array = json(expected.c_str());
    EXPECT_EQ(std::regex_replace(TempDir::read(RECORD), std::regex("\"\\d{10}\""), "\"NOW\""),
              json_object_to_json_string_ext(array, JSON_C_TO_STRING_PRETTY));
    json_object_put(array);
}

TEST_F(LoginRecordTest, LifeCycle) {
    std::string const null = "ERROR: Null ipaddress\n";
    EXPECT_FALSE(INITIALLY_RUNNING);
    EXPECT_EQ(run("sge"), "0|1 0|0|");
    EXPECT_EQ(run("sge", nullptr), null + "0|" + null + "1 0|" + null + "0|");
    dir.write(RECORD, "[1]");
    EXPECT_EQ(start(), "init: new record file is created\n");
    expectRecord("[]");
    EXPECT_EQ(run("gessssssssgsgsgsg"), "1 0|0|1|1|1|1|1|1|1|1|8 0|1|9 0|1|10 1|1|11 3|");
    EXPECT_EQ(run("sge", nullptr), null + "0|" + null + "1 0|" + null + "0|");
    EXPECT_EQ(run("eg"), "1|0 0|");
    EXPECT_EQ(transcript(BELoginRecord::init), "WARN: The process is running\n");
    expectRecord("[" + client("a", "0", "'NOW'") + "]");
    EXPECT_EQ(transcript(BELoginRecord::deinit), "deinit: erased record file\n");
    expectRecord("[]");
    EXPECT_EQ(run("sg"), "1|1 0|");
}

TEST_F(LoginRecordTest, OddElementsArePassedOverAndTheFirstMatchCounts) {
    start();
    std::string const odd =
        "[null,7,'a',['a'],{},{'ipAddress':7},{'ipAddress':''},{'ipAddress':'aa'},";
    std::string const old = client("a", "2147483647", "'5'");
    std::string const before = odd + old + "," + old + "]";
    dir.write(RECORD, before);
    EXPECT_EQ(run("eg", "7"), "0|1 0|");
    EXPECT_EQ(TempDir::read(RECORD), before);
    EXPECT_EQ(run("e"), "1|");
    EXPECT_EQ(run("s", "A"), "1|");
    expectRecord(odd + client("a", "0", "'5'") + "," + old + "," + client("A", "1", "'NOW'") + "]");
    dir.write(RECORD, before);
    EXPECT_EQ(run("s"), "1|");
    expectRecord(odd + client("a", "-2147483648", "'NOW'") + "," + old + "]");
}

TEST_F(LoginRecordTest, LockoutOfARecordedClient) {
    start();
    fixedTime = time(nullptr);
    std::tuple<char const*, std::string, std::string> const rows[] = {
        {"10", ago(30), "10 1|"},
        {"11", ago(90), "11 2|"},
        {"12", ago(-99), "12 5|"},
        {"12", "' 7x'", "12 0|"},
        {"12", "'-1'", "12 5|"},
        {"12", "'x'", "12 5|"},
        {"12", "'99999999999999999999'", "12 5|"},
        {"12", "7", NO_TIME + "12 5|"},
        {"12", "null", NO_TIME + "12 5|"},
        {"-5", "7", "-5 0|"},
        {"'12'", "''", "12 5|"},
        {"5000000000", "''", "2147483647 4294967275|"}};
    for (auto const& [attempts, last, output] : rows) {
        dir.write(RECORD, "[" + client("a", attempts, last) + "]");
        EXPECT_EQ(run("g"), output) << attempts << ", " << last;
    }
    dir.write(RECORD, "[{'ipAddress':'a'},{'ipAddress':'b','attempts':12}]");
    EXPECT_EQ(run("g", "a") + run("g", "b"), "0 0|" + NO_TIME + "12 5|");
    fixedTime = 0;
}

TEST(Lockout, LengthAndWhatIsLeft) {
    std::pair<int, unsigned int> const lengths[] = {{INT_MIN, 0}, {0, 0},  {9, 0},
                                                    {10, 1},      {11, 3}, {INT_MAX, 4294967275}};
    for (auto const& [attempts, minutes] : lengths) {
        EXPECT_EQ(lockoutMinutes(attempts), minutes) << attempts;
    }
    uint64_t const huge = 60ULL << 32;  // in minutes past 32 bits
    std::tuple<unsigned int, uint64_t, uint64_t, unsigned int> const rows[] = {
        {5, 100, 100, 5},      {5, 101, 100, 5}, {5, 100, 159, 5},
        {5, 100, 160, 4},      {5, 100, 399, 1}, {5, 100, 400, 0},
        {5, UINT64_MAX, 0, 5}, {5, 0, huge, 0},  {UINT_MAX, 0, huge - 61, 1}};
    for (auto const& [length, last, now, left] : rows) {
        EXPECT_EQ(minutesLeft(length, last, now), left) << last << ", " << now;
    }
}

TEST_F(LoginRecordTest, ABadFileStopsTheRecord) {
    std::pair<std::string, std::string> const rows[] = {
        {"-", NO_FILE},    {"", NO_FILE},    {"[{'a': 1}", NO_FILE}, {"\x7f\x01[]", NO_FILE},
        {"null", NO_FILE}, {"{}", NO_ARRAY}, {"'[]'", NO_ARRAY},     {"false ", NO_ARRAY}};
    IntendedLeaks const values;  // of the ill-formed files
    for (auto const& [content, line] : rows) {
        for (char const* operation : {"s", "g", "e"}) {
            start();
            content == "-" ? static_cast<void>(remove(RECORD)) : dir.write(RECORD, content);
            EXPECT_EQ(run(operation), line + (*operation == 'g' ? "1 0|" : "0|")) << content;
            EXPECT_EQ(run("sge"), "0|1 0|0|");
            EXPECT_FALSE(BELoginRecord::isRunning);
            EXPECT_EQ(TempDir::read(RECORD), content == "-" ? "" : content);
        }
    }
    start();
    EXPECT_EQ(run("s"), "1|");
}

TEST_F(LoginRecordTest, AFileThatCannotBeWritten) {
    remove(RECORD);
    dir.write(std::string(RECORD) + "/in the way", "");
    IntendedLeaks const array;
    EXPECT_EQ(start(), "Fail to create record file\n");
    EXPECT_FALSE(BELoginRecord::isRunning);
    EXPECT_EQ(transcript(BELoginRecord::deinit), "Fail to create record file\n");
}

}  // namespace

extern "C" time_t __real_time(time_t* out);
extern "C" time_t __wrap_time(time_t* out);
time_t __wrap_time(time_t* out) { return fixedTime != 0 ? fixedTime : __real_time(out); }
