// The log: line form, switches, the log file, start-up, and printing from many threads.
#include "Logger.h"

#include <signal.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <thread>

#include "BEConfig.h"
#include "Support.h"

namespace {

using LoggerTest = LibraryTest;

int const INITIAL_FILE_LOG = Logger::enableFileLog;
unsigned int const INITIAL_MASK = Logger::mask;
std::string const LINE = "UTIL          | INFO: hello\n";

std::string hello(unsigned int level = LOG_TYPE_INFO, unsigned int group = LOG_GROUP_UTIL) {
    return printed([&] { Logger::print(LOG_TYPE_T{level}, LOG_GROUP_T{group}, "%s\n", "hello"); });
}

TEST_F(LoggerTest, GroupNamesFillFourteenColumns) {
    std::istringstream names(
        "UTIL WSL API_AL APIV1_GATEWAY APIV1_WIFI APIV1_NETWORK APIV1_SECURITY APIV1_SERVICE "
        "APIV1_MEDIA APIV1_QOS FAL LDB_GATEWAY LDB_WIFI LDB_NETWORK LDB_SECURITY LDB_SERVICE "
        "LDB_MEDIA LDB_QOS UTEST");
    for (unsigned int group = 0; group < 40; ++group) {  // those past the last have no name
        std::string name;
        names >> name;
        name.resize(14, ' ');
        EXPECT_EQ(hello(LOG_TYPE_DEBUG, group), name + "|DEBUG: hello\n") << group;
    }
    EXPECT_EQ(hello(LOG_TYPE_WARN, ~0U), "              | WARN: hello\n");

    for (size_t length : {15, 64, 65, 3000}) {
        std::string const name(length, 'N');
        char const* const before = std::exchange(Logger::LogGroupNames[1], name.c_str());
        EXPECT_EQ(hello(LOG_TYPE_ERROR, 1), name + "|ERROR: hello\n");
        Logger::LogGroupNames[1] = before;
    }
}

TEST_F(LoggerTest, ALevelNeedsItsOwnSwitchAndTheRestNone) {
    char const* const labels[] = {" INFO", " WARN", "DEBUG", "ERROR", "PRINT"};
    int* const switches[] = {&BEConfig::LOG_INFO_ENABLE, &BEConfig::LOG_WARNING_ENABLE,
                             &BEConfig::LOG_DEBUG_ENABLE, &BEConfig::LOG_ERROR_ENABLE};
    for (unsigned int on = 0; on <= 4; ++on) {
        for (unsigned int i = 0; i < 4; ++i) {
            *switches[i] = i == on ? -1 : 0;
        }
        for (unsigned int level : {0U, 1U, 2U, 3U, 4U, 7U}) {
            std::string const line = std::string("UTIL          |") + labels[std::min(level, 4U)];
            EXPECT_EQ(hello(level), level == on || level >= 4 ? line + ": hello\n" : "") << on;
        }
    }
}

TEST_F(LoggerTest, SetGroupChangesOneBitAndTheBitAloneDecides) {
    Logger::enableFileLog = 1;
    std::tuple<unsigned int, unsigned int, bool, unsigned int> const rows[] = {
        {~0U, 3, false, ~8U},   {0, 3, true, 8},   {8, 3, true, 8},
        {4, 3, false, 4},       {4, 35, true, 12}, {~0U, ~0U, false, ~0U / 2},
        {0, 31, true, 1U << 31}};
    for (auto const& [before, group, enable, after] : rows) {
        BEConfig::LOG_FILE = std::to_string(before) + std::to_string(group);
        Logger::mask = before;
        Logger::setGroup(LOG_GROUP_T{group}, enable);
        EXPECT_EQ(Logger::mask, after) << before << ", group " << group;
        EXPECT_NE((hello(LOG_TYPE_INFO, group) + hello(7, group)).empty(), enable) << group;
        EXPECT_EQ(TempDir::exists(BEConfig::LOG_FILE), enable) << group;
    }
}

TEST_F(LoggerTest, AMessageIsCutAfter1023Characters) {
    for (int length : {1022, 1023, 1024, 2000}) {
        std::string const message = std::string(static_cast<size_t>(length) - 1, '0') + "7";
        EXPECT_EQ(printed([&] { Logger::print(LOG_TYPE_INFO, LOG_GROUP_UTIL, "%0*d", length, 7); }),
                  "UTIL          | INFO: " + message.substr(0, 1023));
    }
}

// The line about a file that cannot be opened comes first: the file is written before the line is
// printed.
TEST_F(LoggerTest, TheFileIsOpenedAnewForEachLine) {
    BEConfig::LOG_FILE = "be.log";
    EXPECT_EQ(hello(), LINE);
    EXPECT_FALSE(TempDir::exists("be.log"));

    auto const openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    auto const before = openFiles();
    Logger::enableFileLog = -1;
    dir.write("be.log", "before\n");
    EXPECT_EQ(hello() + hello(), LINE + LINE);
    EXPECT_EQ(TempDir::read("be.log"), "before\n" + LINE + LINE);
    remove("be.log");
    EXPECT_EQ(hello(), LINE);
    EXPECT_EQ(TempDir::read("be.log"), LINE);

    BEConfig::LOG_FILE = "logs/be.log";
    std::string const failing = "fail to open file logs/be.log\n" + LINE;
    EXPECT_EQ(hello() + hello(), failing + failing);
    mkdir("logs", 0700);
    EXPECT_EQ(hello(), LINE);
    EXPECT_EQ(TempDir::read("logs/be.log"), LINE);
    EXPECT_EQ(openFiles(), before);
}

TEST_F(LoggerTest, InitSettlesMaskAndFileLoggingAndSwallowsSegmentationFaults) {
    EXPECT_EQ(INITIAL_FILE_LOG, 1);
    EXPECT_EQ(INITIAL_MASK, 0U);
    auto const handler = signal(SIGSEGV, SIG_IGN);
    bool const replaceable = signal(SIGSEGV, handler) == SIG_IGN;  // no sanitizer keeps its own
    dir.write("old.log", "before\n");
    std::tuple<char const*, int, int, int> const rows[] = {{"old.log", 0, 1, 1},
                                                           {"old.log", 1, 0, 0},
                                                           {"new.log", 7, 0, 1},
                                                           {"new.log", 0, 1, 0},
                                                           {"none/be.log", 1, 1, 0}};
    for (auto const& [file, toFile, before, after] : rows) {
        remove("new.log");
        BEConfig::LOG_FILE = file;
        BEConfig::LOG_TO_FILE = toFile;
        BEConfig::LOG_MASK = -2;
        Logger::enableFileLog = before;
        auto const init = [&] {
            int const result = Logger::init();
            raise(replaceable ? SIGSEGV : 0);
            printf("%d, %x, %d", result, Logger::mask, Logger::enableFileLog);
        };
        EXPECT_EQ(inChild(init).output, "0, fffffffe, " + std::to_string(after)) << file;
        EXPECT_EQ(TempDir::exists(file), file != std::string("none/be.log"));
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

TEST_F(LoggerTest, ANullFormatIsAnEmptyMessage) {
    void (*const print)(LOG_TYPE_T, LOG_GROUP_T, char const*, ...) = Logger::print;
    EXPECT_EQ(printed([&] { print(LOG_TYPE_WARN, LOG_GROUP_UTIL, nullptr); }),
              "UTIL          | WARN: ");
}

}  // namespace
