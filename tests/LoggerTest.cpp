// The log: printing from many threads, and the commands of golden/logging.txt, which shows the
// rest.
#include "Logger.h"

#include <signal.h>

#include <map>
#include <sstream>
#include <thread>

#include "BEConfig.h"
#include "session/Session.h"

namespace {

using LoggerTest = LibraryTest;

int const INITIAL_FILE_LOG = Logger::enableFileLog;
unsigned int const INITIAL_MASK = Logger::mask;

// The file and standard output are written under one lock: the same lines in the same order.
TEST_F(LoggerTest, LinesOfManyThreadsNeverMix) {
    Logger::enableFileLog = 1;
    BEConfig::LOG_FILE = "be.log";
    std::map<std::string, int> lines;
    std::map<std::string, int> expected;
    std::string const output = printed([&] {
        std::jthread threads[8];
        for (int t = 0; t < 8; ++t) {
            expected["WSL           | WARN: " + std::to_string(t)] = 200;
            threads[t] = std::jthread([t] {
                for (int i = 0; i < 200; ++i) {
                    Logger::print(LOG_TYPE_WARN, LOG_GROUP_WSL, "%d\n", t);
                }
            });
        }
    });
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        ++lines[line];
    }
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(TempDir::read("be.log"), output);
}

// Logs word 3; without it the format is null.
void print(Call& c) {
    void (*const log)(LOG_TYPE_T, LOG_GROUP_T, char const*, ...) = Logger::print;
    auto const level = LOG_TYPE_T{c.number(1)};
    auto const group = LOG_GROUP_T{c.number(2)};
    c.words.size() > 3 ? log(level, group, "%s\n", c.word(3)) : log(level, group, nullptr);
}

void setSwitches(Call& c) {
    BEConfig::LOG_INFO_ENABLE = static_cast<int>(c.number(1));
    BEConfig::LOG_WARNING_ENABLE = static_cast<int>(c.number(2));
    BEConfig::LOG_DEBUG_ENABLE = static_cast<int>(c.number(3));
    BEConfig::LOG_ERROR_ENABLE = static_cast<int>(c.number(4));
}

void setGroup(Call& c) {
    Logger::mask = c.number(1);
    Logger::setGroup(LOG_GROUP_T{c.number(2)}, c.words[3] == "on");
    c.result = std::to_string(Logger::mask);
}

// Starts the log in a child process, which must then survive a segmentation fault, unless a
// sanitizer keeps its own handler.
void initialize(Call& c) {
    EXPECT_EQ(INITIAL_FILE_LOG, 1);
    EXPECT_EQ(INITIAL_MASK, 0U);
    auto const handler = signal(SIGSEGV, SIG_IGN);
    bool const isReplaceable = signal(SIGSEGV, handler) == SIG_IGN;
    BEConfig::LOG_FILE = c.words[1];
    BEConfig::LOG_TO_FILE = static_cast<int>(c.number(2));
    BEConfig::LOG_MASK = -2;
    Logger::enableFileLog = static_cast<int>(c.number(3));
    auto const start = [&] {
        int const result = Logger::init();
        raise(isReplaceable ? SIGSEGV : 0);
        printf("%d, mask %x, file %d", result, Logger::mask, Logger::enableFileLog);
    };
    c.result = inChild(start).output;
}

void setLogFile(Call& c) {
    BEConfig::LOG_FILE = c.words[1];
    Logger::enableFileLog = static_cast<int>(c.number(2));
}

}  // namespace

Commands const LOG_COMMANDS = {
    {"print-log", print},
    {"switches", setSwitches},
    {"group", setGroup},
    {"group-name",
     [](Call& c) {
         static char const* name = "A_NAME_PAST_14_COLUMNS";
         std::swap(name, Logger::LogGroupNames[c.number(1)]);
     }},
    {"log-file", setLogFile},
    {"init-log", initialize},
};
