// The log: start-up, and printing from many threads. golden/logging.txt has the form of the lines, the
// switches and the log file.
#include "Logger.h"

#include <signal.h>

#include <map>
#include <thread>

#include "BEConfig.h"
#include "session/Session.h"

namespace {

using LoggerTest = LibraryTest;

int const INITIAL_FILE_LOG = Logger::enableFileLog;
unsigned int const INITIAL_MASK = Logger::mask;

TEST_F(LoggerTest, InitSettlesMaskAndFileLoggingAndSwallowsSegmentationFaults) {
    EXPECT_EQ(INITIAL_FILE_LOG, 1);
    EXPECT_EQ(INITIAL_MASK, 0U);
    auto const handler = signal(SIGSEGV, SIG_IGN);
    bool const replaceable = signal(SIGSEGV, handler) == SIG_IGN;  // no sanitizer keeps its own
    dir.write("old.log", "before\n");
    struct {
        char const* file;
        int setting;
        int before;
        int after;
    } const rows[] = {{"old.log", 0, 1, 1},
                      {"old.log", 1, 0, 0},
                      {"new.log", 7, 0, 1},
                      {"new.log", 0, 1, 0},
                      {"none/be.log", 1, 1, 0}};
    for (auto const& row : rows) {
        remove("new.log");
        BEConfig::LOG_FILE = row.file;
        BEConfig::LOG_TO_FILE = row.setting;
        BEConfig::LOG_MASK = -2;
        Logger::enableFileLog = row.before;
        auto const init = [&] {
            int const result = Logger::init();
            raise(replaceable ? SIGSEGV : 0);
            printf("%d, %x, %d", result, Logger::mask, Logger::enableFileLog);
        };
        EXPECT_EQ(inChild(init).output, "0, fffffffe, " + std::to_string(row.after)) << row.file;
        EXPECT_EQ(TempDir::exists(row.file), row.file != std::string("none/be.log"));
    }
    EXPECT_EQ(TempDir::read("old.log"), "before\n");
}

// The file and standard output are written under one lock: the same lines in the same order.
TEST_F(LoggerTest, LinesOfManyThreadsNeverMix) {
    Logger::enableFileLog = 1;
    BEConfig::LOG_FILE = "be.log";
    std::map<std::string, int> lines;
    std::map<std::string, int> expected;
    std::string const output = printed([&] {
        std::jthread threads[8];
        for (int t = 0; t < 8; ++t) {
            expected["WSL           | WARN: " + std::to_string(t) + "\n"] = 200;
            threads[t] = std::jthread([t] {
                for (int i = 0; i < 200; ++i) {
                    Logger::print(LOG_TYPE_WARN, LOG_GROUP_WSL, "%d\n", t);
                }
            });
        }
    });
    for (size_t at = 0; at < output.size(); at = output.find('\n', at) + 1) {
        ++lines[output.substr(at, output.find('\n', at) + 1 - at)];
    }
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(TempDir::read("be.log"), output);
}

// Logs the words from the third one on; without any the format is null.
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
};
