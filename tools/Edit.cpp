// Edits a copy of a database, and saves it if the database has not changed meanwhile.
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <initializer_list>

#include "Tool.h"

namespace vobidb {

namespace {

typedef void Handler(int signal);

void handle(std::initializer_list<int> signals, Handler* handler) {
    struct sigaction action = {};
    action.sa_handler = handler;
    for (int const signal : signals) {
        sigaction(signal, &action, nullptr);
    }
}

char const* copyName = nullptr;  // for a signal to remove

// A signal ends the program wherever it waits, be it for the database.
void endWithoutCopy(int signal) {
    unlink(copyName);
    handle({signal}, SIG_DFL);
    raise(signal);
}

// While the editor has the copy, a signal is only noted.
volatile sig_atomic_t interrupted = 0;
void note(int) { interrupted = 1; }

// A file that only its owner reads, which goes with the object, or with a signal.
class Copy {
  public:
    explicit Copy(char const* type) {
        char const* const folder = getenv("TMPDIR");
        name_ =
            std::string(folder != nullptr ? folder : "/tmp") + "/vobidb-" + type + "-XXXXXX.json";
        copyName = name_.c_str();
        handle({SIGINT, SIGTERM, SIGHUP, SIGQUIT}, endWithoutCopy);
        fd_ = mkostemps(name_.data(), 5, O_CLOEXEC);
        if (fd_ < 0) {
            throw complain(FAILED, "%s: %s", name_.c_str(), strerror(errno));
        }
    }
    ~Copy() {
        unlink(name_.c_str());
        handle({SIGINT, SIGTERM, SIGHUP, SIGQUIT}, SIG_DFL);
        close(fd_);
    }
    Copy(Copy const&) = delete;
    Copy& operator=(Copy const&) = delete;

    char const* name() const { return name_.c_str(); }
    bool fill(std::string const& text) const { return writeAll(fd_, text); }

  private:
    std::string name_;
    int fd_;
};

char const* editor() {
    for (char const* const variable : {"VISUAL", "EDITOR"}) {
        char const* const command = getenv(variable);
        if (command != nullptr && *command != '\0') {
            return command;
        }
    }
    return "vi";
}

// The keyboard's signals are the editor's as long as it runs.
void leaveKeyboardTo(pid_t child) {
    handle({SIGINT, SIGQUIT}, SIG_IGN);
    int status = -1;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    handle({SIGINT, SIGTERM, SIGHUP, SIGQUIT}, endWithoutCopy);
    if (status != 0) {
        throw complain(FAILED, "the editor has failed; nothing is changed");
    }
}

// The editor is a command of the shell, and may have arguments. The shell survives the keyboard, too.
void runEditor(Copy const& copy) {
    std::string const command = std::string("trap : INT QUIT; ") + editor() + " \"$1\"";
    handle({SIGTERM, SIGHUP}, note);
    pid_t const child = fork();
    if (child == 0) {
        handle({SIGPIPE, SIGXFSZ}, SIG_DFL);
        execl("/bin/sh", "sh", "-c", command.c_str(), "sh", copy.name(), nullptr);
        _exit(127);
    }
    if (child < 0) {
        throw complain(FAILED, "the editor cannot be started: %s", strerror(errno));
    }
    leaveKeyboardTo(child);
    if (interrupted != 0) {
        throw complain(FAILED, "interrupted; nothing is changed");
    }
}

Result saveEdited(Options const& options, unsigned int type, LocalDbSnapshot const& before,
                  json_object* edited) {
    LocalDbTransaction change(type, "", "default", awaitChange(options));
    if (!change) {
        return explain(change, type);
    }
    char const* const name = LocalDbCtrl::getApiDir(type);
    if (change.version() != before.version()) {
        return complain(BUSY, "%s: has changed meanwhile; nothing is changed", name);
    }
    if (!replaceContent(*change.object(), edited)) {
        return complain(NOT_VALID, "%s: an object must stay one, and an array; nothing is changed",
                        name);
    }
    return save(change);
}

// Saves what the copy holds, unless it is as it was.
Result take(Options const& options, unsigned int type, LocalDbSnapshot const& before,
            Copy const& copy, std::string const& text) {
    try {
        std::string const now = contentOf(copy.name());
        if (now == text) {
            return complain(DONE, "%s: not edited", LocalDbCtrl::getApiDir(type));
        }
        return saveEdited(options, type, before, parsed(now, "the copy", NOT_VALID)->jobj);
    } catch (Result result) {
        return result;
    }
}

bool wantsAgain() {
    if (isatty(STDIN_FILENO) == 0) {
        return false;
    }
    fputs("Edit again? [y/n] ", stderr);
    fflush(stderr);
    char answer[64] = "";
    ssize_t const length = read(STDIN_FILENO, answer, sizeof answer);
    return length > 0 && (answer[0] == 'y' || answer[0] == 'Y');
}

}  // namespace

Result edit(Options const& options, char** words, int) {
    unsigned int const type = typeOf(words[0]);
    LocalDbSnapshot const before = saved(type);
    std::string const text = pagesOf(copyOf(before)->jobj) + "\n";
    signal(SIGPIPE, SIG_IGN);  // it would come only from a message that no one reads
    Copy const copy(words[0]);
    if (!copy.fill(text)) {
        return complain(FAILED, "%s: %s", copy.name(), strerror(errno));
    }
    Result result = DONE;
    do {
        runEditor(copy);
        result = take(options, type, before, copy, text);
    } while (result != DONE && wantsAgain());
    return result;
}

}  // namespace vobidb
