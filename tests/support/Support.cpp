#include "Support.h"

#include <ctype.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "BEConfig.h"
#include "BELoginRecord.h"
#include "LocalDbCtrl.h"
#include "Logger.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace fs = std::filesystem;

// In a build that measures coverage; see scripts/coverage.sh.
extern "C" [[gnu::weak]] void __gcov_dump();

TempDir::TempDir() : before_(fs::current_path()) {
    char name[] = "/tmp/vobiutils-test-XXXXXX";
    path_ = mkdtemp(name);
    fs::current_path(path_);
}

TempDir::~TempDir() {
    fs::current_path(before_);
    fs::remove_all(path_);
}

void TempDir::write(std::string const& name, std::string const& text) {
    fs::create_directories(fs::absolute(name).parent_path());
    std::ofstream(name, std::ios::binary) << text;
}

std::string TempDir::read(std::string const& name) {
    std::ifstream file(name, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

bool TempDir::exists(std::string const& name) { return fs::exists(name); }

namespace {

// Sends what `stream` writes to a file until the scope ends.
class Redirection {
  public:
    explicit Redirection(FILE* stream) : stream_(stream), file_(tmpfile()) {
        fflush(stream_);
        saved_ = dup(fileno(stream_));
        dup2(fileno(file_), fileno(stream_));
    }
    Redirection(Redirection const&) = delete;
    Redirection& operator=(Redirection const&) = delete;
    ~Redirection() {
        restore();
        fclose(file_);
    }

    std::string text() {
        restore();
        std::string result;
        rewind(file_);
        for (int c = fgetc(file_); c != EOF; c = fgetc(file_)) {
            result += static_cast<char>(c);
        }
        return result;
    }

  private:
    void restore() {
        if (saved_ >= 0) {
            fflush(stream_);
            dup2(saved_, fileno(stream_));
            close(saved_);
            saved_ = -1;
        }
    }

    FILE* stream_;
    FILE* file_;
    int saved_;
};

std::string printedOn(FILE* stream, std::function<void()> const& action) {
    Redirection redirection(stream);
    action();
    return redirection.text();
}

void replaceAll(std::string& text, std::string const& from, std::string const& to) {
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
        text.replace(at, from.size(), to);
        at += to.size();
    }
}

void replacePointers(std::string& text) {
    replaceAll(text, "(nil)", "NIL");
    for (size_t at = text.find("0x"); at != std::string::npos; at = text.find("0x", at + 1)) {
        size_t end = at + 2;
        while (end < text.size() && isxdigit(static_cast<unsigned char>(text[end]))) {
            ++end;
        }
        if (end - at > 5) {
            text.replace(at, end - at, "PTR");
        }
    }
}

}  // namespace

std::string printed(std::function<void()> const& action) { return printedOn(stdout, action); }

std::string printedOnError(std::function<void()> const& action) {
    return printedOn(stderr, action);
}

std::string transcript(std::function<void()> const& action) {
    std::string text = printed(action);
    replaceAll(text, "UTIL          |", "");
    replaceAll(text, " INFO:", "INFO:");
    replaceAll(text, " WARN:", "WARN:");
    replacePointers(text);
    return text;
}

ChildResult inChild(std::function<void()> const& action) {
    ChildResult result = {-1, ""};
    result.output = printed([&] {
        pid_t const child = fork();
        if (child == 0) {
            action();
            fflush(stdout);
            if (__gcov_dump != nullptr) {
                __gcov_dump();  // _exit would lose the child's counts
            }
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    });
    return result;
}

long entriesOf(char const* folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

std::string attributeOf(char const* file, char const* name) {
    char value[4096];
    ssize_t const length = getxattr(file, name, value, sizeof value);
    return std::string(value, length > 0 ? static_cast<size_t>(length) : 0);
}

bool setAttribute(char const* file, char const* name, std::string const& value) {
    return setxattr(file, name, value.data(), value.size(), 0) == 0;
}

char const ACL[] = "system.posix_acl_access";
std::string const READER_1235(
    "\2\0\0\0"
    "\1\0\6\0\xff\xff\xff\xff"     // the owner: rw-
    "\2\0\4\0\xd3\4\0\0"           // user 1235: r--
    "\4\0\0\0\xff\xff\xff\xff"     // the group
    "\x10\0\4\0\xff\xff\xff\xff"   // the mask: r--
    "\x20\0\0\0\xff\xff\xff\xff",  // others
    44);

bool isHeld(pthread_mutex_t& mutex) {
    bool held = false;
    std::thread([&] {  // the holder itself must not ask
        held = pthread_mutex_trylock(&mutex) != 0;
        if (!held) {
            pthread_mutex_unlock(&mutex);
        }
    })
        .join();
    return held;
}

void waitUntilAsleep(std::atomic<pid_t> const& thread) {
    for (int asleep = 0; asleep < 5;) {
        std::string const status =
            TempDir::read("/proc/self/task/" + std::to_string(thread) + "/stat");
        size_t const name = status.rfind(')');
        asleep = name != status.npos && status.compare(name, 3, ") S") == 0 ? asleep + 1 : 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void onSmallStack(std::function<void()> const& action) {
    pthread_attr_t small;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, 128 << 10);
    auto const run = [](void* data) -> void* {
        (*static_cast<std::function<void()> const*>(data))();
        return nullptr;
    };
    pthread_t thread;
    void* const data = const_cast<std::function<void()>*>(&action);
    EXPECT_EQ(pthread_create(&thread, &small, run, data), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&small);
}

json_object* json(char const* text) { return json_tokener_parse(text); }

std::string text(json_object* value) {
    std::string result = json_object_to_json_string_ext(value, JSON_C_TO_STRING_PLAIN);
    std::replace(result.begin(), result.end(), '"', '\'');
    return result;
}

#ifdef __SANITIZE_ADDRESS__
IntendedLeaks::IntendedLeaks() { __lsan_disable(); }
IntendedLeaks::~IntendedLeaks() { __lsan_enable(); }
#else
IntendedLeaks::IntendedLeaks() {}
IntendedLeaks::~IntendedLeaks() {}
#endif

struct LibraryTest::Settings {
    std::string logFile = BEConfig::LOG_FILE;
    std::string dataLocation = BEConfig::DATA_LOCATION;
    int levels[4] = {BEConfig::LOG_INFO_ENABLE, BEConfig::LOG_WARNING_ENABLE,
                     BEConfig::LOG_DEBUG_ENABLE, BEConfig::LOG_ERROR_ENABLE};
    int logToFile = BEConfig::LOG_TO_FILE;
    int logMask = BEConfig::LOG_MASK;
    int enableFileLog = Logger::enableFileLog;
    unsigned int mask = Logger::mask;
};

LibraryTest::LibraryTest() : before_(new Settings) {
    Logger::mask = ~0U;
    Logger::enableFileLog = 0;
    BELoginRecord::isRunning = false;
}

LibraryTest::~LibraryTest() {
    BEConfig::LOG_FILE = before_->logFile;
    BEConfig::DATA_LOCATION = before_->dataLocation;
    BEConfig::LOG_INFO_ENABLE = before_->levels[0];
    BEConfig::LOG_WARNING_ENABLE = before_->levels[1];
    BEConfig::LOG_DEBUG_ENABLE = before_->levels[2];
    BEConfig::LOG_ERROR_ENABLE = before_->levels[3];
    BEConfig::LOG_TO_FILE = before_->logToFile;
    BEConfig::LOG_MASK = before_->logMask;
    Logger::enableFileLog = before_->enableFileLog;
    Logger::mask = before_->mask;
    delete before_;
    IntendedLeaks const dropped;
    LocalDbCtrl::controllers.clear();
}
