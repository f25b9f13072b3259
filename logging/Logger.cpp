// The log: tests whether a line is enabled, formats it, appends it to the file and prints it. The
// library itself logs through the macros of Log.h.
#include "Logger.h"

#include <assert.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <memory>
#include <new>

#include "BEConfig.h"
#include "jsondata/files/FileDescriptor.h"
#include "logging/Log.h"
#include "logging/MutexGuard.h"

using namespace vobiutils;

int Logger::enableFileLog = 1;
char const* Logger::LogGroupNames[19] = {
    "UTIL",           "WSL",           "API_AL",
    "APIV1_GATEWAY",  "APIV1_WIFI",    "APIV1_NETWORK",
    "APIV1_SECURITY", "APIV1_SERVICE", "APIV1_MEDIA",
    "APIV1_QOS",      "FAL",           "LDB_GATEWAY",
    "LDB_WIFI",       "LDB_NETWORK",   "LDB_SECURITY",
    "LDB_SERVICE",    "LDB_MEDIA",     "LDB_QOS",
    "UTEST",
};
pthread_mutex_t Logger::lock = PTHREAD_MUTEX_INITIALIZER;
unsigned int Logger::mask = 0;

namespace {

size_t const GROUP_COUNT = sizeof Logger::LogGroupNames / sizeof Logger::LogGroupNames[0];
size_t const NAME_ROOM = 64;  // any longer name goes to the heap
size_t const LABEL_SIZE = sizeof "|DEBUG: ";
size_t const MESSAGE_SIZE = 1024;  // with its terminator

char const* groupName(LOG_GROUP_T group) {
    char const* const name = group < GROUP_COUNT ? Logger::LogGroupNames[group] : nullptr;
    return name != nullptr ? name : "";
}

char const* levelLabel(LOG_TYPE_T level) {
    switch (level) {
        case LOG_TYPE_INFO: return "INFO";
        case LOG_TYPE_WARN: return "WARN";
        case LOG_TYPE_DEBUG: return "DEBUG";
        case LOG_TYPE_ERROR: return "ERROR";
        default: return "PRINT";
    }
}

// One line of the log in one buffer, so that a single call writes it: neither another process that
// appends to the file nor another thread that prints can get in between.
//
// The buffer is normally on the stack. Only the message has a limit, though: a program may put a
// group name of any length into Logger::LogGroupNames, and a line with a long one is built on the
// heap. When there is no memory for that, the name is cut.
class Line {
  public:
    [[gnu::format(printf, 4, 0)]] Line(LOG_TYPE_T level, LOG_GROUP_T group, char const* format,
                                       va_list arguments) {
        char const* const name = groupName(group);
        int const nameLength = makeRoom(strlen(name));
        char* const message =
            text_ + snprintf(text_, size_, "%-14.*s|%5s: ", nameLength, name, levelLabel(level));
        assert(message + MESSAGE_SIZE <= text_ + size_);
        if (format == nullptr || vsnprintf(message, MESSAGE_SIZE, format, arguments) < 0) {
            *message = '\0';
        }
    }

    char const* text() const { return text_; }

  private:
    // Returns how many of the `length` characters of a name there is room for.
    int makeRoom(size_t length) {
        if (length <= NAME_ROOM) {
            return static_cast<int>(length);
        }
        size_t const size = length + LABEL_SIZE + MESSAGE_SIZE;
        heap_.reset(new (std::nothrow) char[size]);
        if (heap_ == nullptr) {
            return NAME_ROOM;
        }
        text_ = heap_.get();
        size_ = size;
        return static_cast<int>(length);
    }

    char stack_[NAME_ROOM + LABEL_SIZE + MESSAGE_SIZE];
    std::unique_ptr<char[]> heap_;
    char* text_ = stack_;
    size_t size_ = sizeof stack_;
};

// Appends to the file, which is made if it is missing; nothing, for no characters. False when it cannot
// be opened. A line that cannot be written whole is given up: the log has nowhere to report that.
bool appendToFile(char const* line, size_t length) {
    FileDescriptor const file(BEConfig::LOG_FILE.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
    if (!file) {
        return false;
    }
    file.writeAll(line, length);
    return true;
}

// Not inlined, so that a disabled call does not pay for this function's 1 KiB stack frame.
[[gnu::noinline, gnu::format(printf, 3, 0)]] void write(LOG_TYPE_T level, LOG_GROUP_T group,
                                                        char const* format, va_list arguments) {
    Line const line(level, group, format, arguments);
    size_t const length = strlen(line.text());
    MutexGuard const guard(Logger::lock);
    if (Logger::enableFileLog != 0 && !appendToFile(line.text(), length)) {
        printf("fail to open file %s\n", BEConfig::LOG_FILE.c_str());
    }
    fwrite(line.text(), 1, length, stdout);
}

}  // namespace

int Logger::init() {
    mask = static_cast<unsigned int>(BEConfig::LOG_MASK);
    struct stat status;
    if (stat(BEConfig::LOG_FILE.c_str(), &status) != 0) {
        // intended: LOG_TO_FILE is ignored when the file exists
        enableFileLog = appendToFile("", 0) && BEConfig::LOG_TO_FILE != 0 ? 1 : 0;
    }
    signal(SIGSEGV, be_sig_handler);
    return 0;
}

void Logger::setGroup(LOG_GROUP_T group, bool enable) {
    unsigned int const bit = 1U << (group % 32U);
    mask = enable ? mask | bit : mask & ~bit;
}

void Logger::print(LOG_TYPE_T level, LOG_GROUP_T group, char const* format, ...) {
    if (!enabled(level, group)) [[likely]] {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    write(level, group, format, arguments);
    va_end(arguments);
}

void vobiutils::logLine(LOG_TYPE_T level, char const* format, ...) {
    if (!enabled(level, LOG_GROUP_UTIL)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    write(level, LOG_GROUP_UTIL, format, arguments);
    va_end(arguments);
}

void be_sig_handler(int) {}
