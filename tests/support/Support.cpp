#include "Support.h"

#include <fcntl.h>
#include <json-c/json.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>
#include <tuple>

#include "BEConfig.h"
#include "BELoginRecord.h"
#include "LocalDbCtrl.h"
#include "Logger.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace fs = std::filesystem;

// Defined in a build that measures coverage; see scripts/coverage.sh.
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

// Redirects a stream to a file rather than a buffer, so that a child process may write, too.
std::string printed(std::function<void()> const& action, FILE* stream) {
    fflush(stream);
    int const before = dup(fileno(stream));
    FILE* const file = tmpfile();
    dup2(fileno(file), fileno(stream));
    action();
    fflush(stream);
    dup2(before, fileno(stream));
    close(before);
    std::string text = TempDir::read("/proc/self/fd/" + std::to_string(fileno(file)));
    fclose(file);
    return text;
}

std::string withoutPointers(std::string text) {
    static std::pair<std::regex, char const*> const replacements[] = {
        {std::regex("UTIL          \\| ?"), ""},
        {std::regex("\\(nil\\)"), "NIL"},
        {std::regex("0x[0-9a-f]{4,}"), "PTR"},
    };
    for (auto const& [from, to] : replacements) {
        text = std::regex_replace(text, from, to);
    }
    return text;
}

std::string asPrintedHere(std::string const& text) {
    char null[16];
    snprintf(null, sizeof null, "%p", static_cast<void*>(nullptr));
    json_object* const array = json_object_new_array();
    bool const isSpread =
        strcmp("[]", json_object_to_json_string_ext(array, JSON_C_TO_STRING_PRETTY)) != 0;
    json_object_put(array);
    std::string const printed =
        isSpread ? text : std::regex_replace(text, std::regex("\\[\n *\\]"), "[]");
    return null[0] == '(' ? printed : std::regex_replace(printed, std::regex("NIL"), null);
}

std::string transcript(std::function<void()> const& action) {
    return withoutPointers(printed(action));
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
    std::thread([&] {  // trylock must not be called by the holder
        held = pthread_mutex_trylock(&mutex) != 0;
        if (!held) {
            pthread_mutex_unlock(&mutex);
        }
    })
        .join();
    return held;
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

namespace {

auto const SETTINGS =
    std::tie(BEConfig::LOG_FILE, BEConfig::DATA_LOCATION, BEConfig::LOG_INFO_ENABLE,
             BEConfig::LOG_WARNING_ENABLE, BEConfig::LOG_DEBUG_ENABLE, BEConfig::LOG_ERROR_ENABLE,
             BEConfig::LOG_TO_FILE, BEConfig::LOG_MASK, Logger::enableFileLog, Logger::mask);

template <typename... Values>
std::function<void()> restoring(std::tuple<Values&...> settings) {
    return [settings, before = std::tuple<Values...>(settings)]() mutable { settings = before; };
}

}  // namespace

LibraryTest::LibraryTest() : restore_(restoring(SETTINGS)) {
    Logger::mask = ~0U;
    Logger::enableFileLog = 0;
    BELoginRecord::isRunning = false;
}

LibraryTest::~LibraryTest() {
    restore_();
    IntendedLeaks const dropped;
    LocalDbCtrl::controllers.clear();
}
