// The log: gate, format, append to the file, print. The library's modules come in through Log.h.
#include "Logger.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "BEConfig.h"
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
size_t const NAME_COLUMNS = 14;
size_t const MESSAGE_SIZE = 1024;  // with its terminator

char const* groupName(LOG_GROUP_T group) {
    char const* const name = group < GROUP_COUNT ? Logger::LogGroupNames[group] : nullptr;
    return name != nullptr ? name : "";
}

// What stands between the padded group name and the message.
char const* levelLabel(LOG_TYPE_T level) {
    switch (level) {
        case LOG_TYPE_INFO: return "| INFO: ";
        case LOG_TYPE_WARN: return "| WARN: ";
        case LOG_TYPE_DEBUG: return "|DEBUG: ";
        case LOG_TYPE_ERROR: return "|ERROR: ";
        default: return "|PRINT: ";
    }
}

iovec part(char const* text, size_t length) { return {const_cast<char*>(text), length}; }

// One line, "%-14s|%5s: %s", as the pieces it is made of: nothing is formatted or copied twice, and
// only the message has a limit.
class Line {
  public:
    Line(LOG_TYPE_T level, LOG_GROUP_T group, char const* message) {
        static char const blanks[] = "              ";
        static_assert(sizeof blanks == NAME_COLUMNS + 1);
        char const* const name = groupName(group);
        char const* const label = levelLabel(level);
        size_t const length = strlen(name);
        parts_[0] = part(name, length);
        parts_[1] = part(blanks, length < NAME_COLUMNS ? NAME_COLUMNS - length : 0);
        parts_[2] = part(label, strlen(label));
        parts_[3] = part(message, strlen(message));
    }

    void print(FILE* stream) const {
        flockfile(stream);  // a printf of another thread must not fall between the pieces
        for (iovec const& piece : parts_) {
            fwrite(piece.iov_base, 1, piece.iov_len, stream);
        }
        funlockfile(stream);
    }

    // False when the file cannot be opened. A line that cannot be written whole is given up: the
    // log has nowhere to report that.
    bool append(char const* file) const {
        int const fd = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
        if (fd < 0) {
            return false;
        }
        write(fd);
        close(fd);
        return true;
    }

  private:
    static int const PARTS = 4;

    void write(int fd) const {
        iovec rest[PARTS];
        memcpy(rest, parts_, sizeof rest);
        for (int first = 0; first < PARTS;) {
            ssize_t const written = writev(fd, rest + first, PARTS - first);
            if (written > 0) {
                first = skip(rest, first, static_cast<size_t>(written));
            } else if (written == 0 || errno != EINTR) {
                return;
            }
        }
    }

    // The first piece of which something is left after `written` bytes.
    static int skip(iovec* rest, int first, size_t written) {
        while (first < PARTS && written >= rest[first].iov_len) {
            written -= rest[first].iov_len;
            ++first;
        }
        if (first < PARTS) {
            rest[first].iov_base = static_cast<char*>(rest[first].iov_base) + written;
            rest[first].iov_len -= written;
        }
        return first;
    }

    iovec parts_[PARTS];
};

// Not inlined, for a call that is switched off to do without its room.
[[gnu::noinline, gnu::format(printf, 3, 0)]] void write(LOG_TYPE_T level, LOG_GROUP_T group,
                                                        char const* format, va_list arguments) {
    char message[MESSAGE_SIZE];
    if (format == nullptr || vsnprintf(message, sizeof message, format, arguments) < 0) {
        message[0] = '\0';
    }
    Line const line(level, group, message);
    MutexGuard const guard(Logger::lock);
    if (Logger::enableFileLog != 0 && !line.append(BEConfig::LOG_FILE.c_str())) {
        printf("fail to open file %s\n", BEConfig::LOG_FILE.c_str());
    }
    line.print(stdout);
}

bool createLogFile() {
    FILE* const file =
        fopen(BEConfig::LOG_FILE.c_str(), "a");  // truncates nothing, should it exist
    if (file == nullptr) {
        return false;
    }
    fclose(file);
    return true;
}

}  // namespace

int Logger::init() {
    mask = static_cast<unsigned int>(BEConfig::LOG_MASK);
    struct stat status;
    if (stat(BEConfig::LOG_FILE.c_str(), &status) != 0) {
        // intended: LOG_TO_FILE counts only for a file that had to be made
        enableFileLog = createLogFile() && BEConfig::LOG_TO_FILE != 0 ? 1 : 0;
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

void be_sig_handler(int) {}
