// Log lines: written, and switched off. Standard output leads nowhere.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "BEConfig.h"
#include "Logger.h"
#include "Scratch.h"
#include "Workload.h"

namespace {

char const FORMAT[] = "UTIL          |DEBUG: %s: Parse: idx=%d key=%s isEnd=%s\n";

void addLine() {
    static std::string const file = scratchFile("be.log");
    Work const product = [](int count) {
        BEConfig::LOG_FILE = file;
        BEConfig::LOG_DEBUG_ENABLE = 1;
        remove(file.c_str());
        for (int i = 0; i < count; ++i) {
            Logger::print(LOG_TYPE_DEBUG, LOG_GROUP_UTIL, "%s: Parse: idx=%d key=%s isEnd=%s\n",
                          "getJObj", i & 7, "reservations", "false");
        }
        BEConfig::LOG_DEBUG_ENABLE = 0;
    };
    Work const limit = [](int count) {
        remove(file.c_str());
        for (int i = 0; i < count; ++i) {
            char line[256];
            int const length =
                snprintf(line, sizeof line, FORMAT, "getJObj", i & 7, "reservations", "false");
            int const fd = open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0666);
            benchmark::DoNotOptimize(write(fd, line, static_cast<size_t>(length)));
            close(fd);
            fwrite(line, 1, static_cast<size_t>(length), stdout);
        }
    };
    Variant const stdio = {"fopen, fprintf, fclose", [](int count) {
                               remove(file.c_str());
                               for (int i = 0; i < count; ++i) {
                                   FILE* const stream = fopen(file.c_str(), "a");
                                   fprintf(stream, FORMAT, "getJObj", i & 7, "reservations",
                                           "false");
                                   fclose(stream);
                                   printf(FORMAT, "getJObj", i & 7, "reservations", "false");
                               }
                           }};
    add({"log/one line", product, limit, {stdio}, 1.15, 0.0});
}

void addSwitchedOff() {
    static int flag = 0;
    static auto const logger = spdlog::null_logger_mt("bench");
    logger->set_level(spdlog::level::warn);
    Work const product = [](int count) {
        for (int i = 0; i < count; ++i) {
            Logger::print(LOG_TYPE_DEBUG, LOG_GROUP_UTIL, "%s: found the object %s\n", "getJObj",
                          "name");
        }
    };
    Work const limit = [](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(flag);
            if (flag != 0) {
                puts("on");
            }
        }
    };
    Variant const spdlogCall = {"spdlog", [](int count) {
                                    for (int i = 0; i < count; ++i) {
                                        logger->debug("{}: found the object {}", "getJObj", "name");
                                    }
                                }};
    add({"log/switched off", product, limit, {spdlogCall}, 0.0, 0.0, 3.0});
}

}  // namespace

void addLogLines() {
    addLine();
    addSwitchedOff();
}
