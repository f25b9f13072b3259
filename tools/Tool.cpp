// Messages, values as text, and the ways to a database.
#include "Tool.h"

#include <BEConfig.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <vector>

namespace vobidb {

namespace {

char const* nameOf(unsigned int type) { return LocalDbCtrl::getApiDir(type); }

uint64_t milliseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
}

// Takes the lock if it can.
bool isHeldByAnother(int lock) {
    return flock(lock, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

std::string jsonOf(json_object* value, int flags) {
    return json_object_to_json_string_ext(value, flags | JSON_C_TO_STRING_NOSLASHESCAPE);
}

}  // namespace

Result complain(Result result, char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    fflush(stdout);  // the lines appear in the order in which they are written
    fputs("vobidb: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    va_end(arguments);
    return result;
}

void print(std::string const& line) {
    fwrite(line.data(), 1, line.size(), stdout);
    putchar('\n');
}

std::string printable(std::string text) {
    for (char& c : text) {
        bool const isControl = (c >= 0 && c < ' ') || c == 0x7f;
        c = isControl ? '?' : c;
    }
    for (size_t at = 0; (at = text.find('\xc2', at)) != std::string::npos; ++at) {
        if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xa0) {
            text.replace(at, 2, "?");
        }
    }
    return text;
}

std::string textOf(unsigned int type, CompiledSchema::Fault const& fault) {
    std::string const place = *fault.path != '\0' ? fault.path : "the whole document";
    return printable(std::string(nameOf(type)) + ": " + place + ": " + fault.message);
}

std::string lineOf(json_object* value) { return jsonOf(value, JSON_C_TO_STRING_PLAIN); }

std::string pagesOf(json_object* value) {
    return jsonOf(value, JSON_C_TO_STRING_PRETTY | JSON_C_TO_STRING_SPACED);
}

unsigned int typeOf(char const* name) {
    unsigned int const type = LocalDbCtrl::getApiType(name);
    if (type < API_TYPE_COUNT) {
        return type;
    }
    std::string known;
    for (char const* const folder : API_DATA_DIR) {
        known += std::string(" ") + folder;
    }
    throw complain(FAILED, "there is no database \"%s\"; there are%s", printable(name).c_str(),
                   known.c_str());
}

char const* pathOf(char const* text) {
    if (!JsonData::isPath(text)) {
        throw complain(FAILED, "\"%s\" is not a path such as ssids.[0].name",
                       printable(text).c_str());
    }
    return text;
}

Node parsed(std::string const& text, std::string const& what, Result result) {
    JsonFault fault = {};
    Node value(JsonData::parse(text.data(), text.size(), &fault));
    if (!value) {
        throw complain(result, "%s is not JSON: line %zu, column %zu: %s", what.c_str(), fault.line,
                       fault.column, fault.reason);
    }
    return value;
}

std::string contentOf(char const* file) {
    bool const isInput = strcmp(file, "-") == 0;
    int const fd = isInput ? dup(STDIN_FILENO) : open(file, O_RDONLY | O_CLOEXEC);
    std::string content;
    char chunk[4096];
    ssize_t count = fd;
    while (count >= 0 && (count = read(fd, chunk, sizeof chunk)) > 0) {
        content.append(chunk, static_cast<size_t>(count));
    }
    int const error = errno;
    close(fd);
    if (count < 0) {
        throw complain(FAILED, "%s: %s", isInput ? "standard input" : file, strerror(error));
    }
    return content;
}

bool writeAll(int fd, std::string const& text) {
    size_t done = 0;
    while (done < text.size()) {
        ssize_t const count = write(fd, text.data() + done, text.size() - done);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        done += count > 0 ? static_cast<size_t>(count) : 0;
    }
    return true;
}

LocalDbSnapshot saved(unsigned int type) {
    LocalDbSnapshot snapshot(type);
    switch (snapshot.status()) {
        case LocalDbSnapshot::READ: return snapshot;
        case LocalDbSnapshot::NO_FILE:
            throw complain(NOT_FOUND, "%s: there is no data file", nameOf(type));
        case LocalDbSnapshot::NO_MEMORY: throw std::bad_alloc();
        default: break;
    }
    throw complain(FAILED, "%s: the data file cannot be read, or is not JSON", nameOf(type));
}

Node copyOf(LocalDbSnapshot const& snapshot) {
    Node copy(snapshot.copy(""));
    return copy ? std::move(copy) : throw std::bad_alloc();
}

WithoutSignals::WithoutSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
        sigaddset(&signals, signal);
    }
    sigprocmask(SIG_BLOCK, &signals, &before_);
}

WithoutSignals::~WithoutSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

unsigned int awaitChange(Options const& options) {
    std::string const name = BEConfig::DATA_LOCATION + "/.change.lock";
    int const lock = open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    uint64_t const start = milliseconds();
    uint64_t waited = 0;
    while (isHeldByAnother(lock)) {
        if (waited >= options.milliseconds) {
            close(lock);
            throw complain(BUSY, "busy, another program is changing several databases");
        }
        usleep(2000);
        waited = milliseconds() - start;
    }
    close(lock);
    return waited < options.milliseconds ? options.milliseconds - static_cast<unsigned int>(waited)
                                         : 0;
}

Result explain(LocalDbTransaction const& change, unsigned int type) {
    switch (change.status()) {
        case LocalDbTransaction::LOCKED: return DONE;
        case LocalDbTransaction::BUSY:
            return complain(BUSY, "%s: busy, another program is changing it", nameOf(type));
        case LocalDbTransaction::NO_FILE:
            saved(type);  // tells it from a file that cannot be reached
            return complain(NOT_FOUND, "%s: there is no data file", nameOf(type));
        case LocalDbTransaction::UNREADABLE:
            return complain(FAILED, "%s: the data file cannot be read, or is not JSON",
                            nameOf(type));
        default: return complain(FAILED, "%s: cannot be locked", nameOf(type));
    }
}

Result save(LocalDbTransaction& change) {
    WithoutSignals const guard;
    if (change.save() == 0) {
        return DONE;
    }
    if (change.status() != LocalDbTransaction::INVALID) {
        return complain(
            FAILED, "the change cannot be saved: no space, no permission, or nested too deeply");
    }
    LocalDbTransaction::Fault const& fault = change.fault();
    return complain(NOT_VALID, "%s; nothing is changed", textOf(fault.apiType, fault).c_str());
}

Result changeDatabase(unsigned int type, Options const& options,
                      std::function<Result(TreeMapObject& document)> const& change) {
    LocalDbTransaction transaction(type, "", "default", awaitChange(options));
    Result result = explain(transaction, type);
    result = result == DONE ? change(*transaction.object()) : result;
    return result == DONE ? save(transaction) : result;
}

bool replaceContent(TreeMapObject& document, json_object* content) {
    json_type const type = json_object_get_type(content);
    if (type != json_object_get_type(document.jobj)) {
        return false;
    }
    if (type == json_type_array) {
        json_object_array_del_idx(document.jobj, 0, json_object_array_length(document.jobj));
        for (size_t i = 0; i < json_object_array_length(content); ++i) {
            json_object_array_add(document.jobj,
                                  json_object_get(json_object_array_get_idx(content, i)));
        }
        return true;
    }
    if (type != json_type_object) {
        return false;
    }
    std::vector<std::string> names;
    json_object_object_foreach(document.jobj, old, unused) {
        static_cast<void>(unused);
        names.emplace_back(old);
    }
    for (std::string const& name : names) {
        json_object_object_del(document.jobj, name.c_str());
    }
    json_object_object_foreach(content, name, value) {
        json_object_object_add(document.jobj, name, json_object_get(value));
    }
    return true;
}

}  // namespace vobidb
