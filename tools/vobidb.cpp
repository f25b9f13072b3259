// vobidb: reads and changes the databases of a gateway from the shell, also while its back end runs.
//
// vobidb.1 is its manual. It keeps to the rules of every other writer: what it reads was saved as a
// whole, and what it changes it changes in a transaction, so that it neither loses nor tears anything.
#include <BEConfig.h>
#include <LocalDbCtrl.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "Tool.h"

namespace vobidb {

namespace {

struct Command {
    char const* name;
    char const* options;  // besides -d and -w
    int least;            // words after it
    int most;
    Run* run;
    char const* usage;
};

int const MANY = 1 << 20;

Command const COMMANDS[] = {
    {"get", "r", 1, 2, get, "get [-r] TYPE [PATH]"},
    {"set", "s", 3, MANY, set, "set [-s] TYPE PATH VALUE [PATH VALUE]..."},
    {"add", "s", 3, 3, add, "add [-s] TYPE PATH VALUE"},
    {"del", "", 2, 2, del, "del TYPE PATH"},
    {"find", "", 2, 3, find, "find TYPE KEY [VALUE]"},
    {"check", "", 0, MANY, check, "check [TYPE]..."},
    {"diff", "S", 2, 2, diff, "diff [-S] TYPE FILE"},
    {"backup", "", 1, 1, backUp, "backup FILE"},
    {"restore", "", 1, 1, restore, "restore FILE"},
    {"edit", "", 1, 1, edit, "edit TYPE"},
};

Result explainUsage() {
    fputs("usage: vobidb [-d DATA] [-w MILLISECONDS] COMMAND\n", stderr);
    for (Command const& command : COMMANDS) {
        fprintf(stderr, "       %s\n", command.usage);
    }
    return FAILED;
}

bool readMilliseconds(char const* text, unsigned int& milliseconds) {
    char* end = nullptr;
    unsigned long const number = strtoul(text, &end, 10);
    milliseconds = static_cast<unsigned int>(number);
    return *text >= '0' && *text <= '9' && *end == '\0' && number < 1000000000;
}

// Reads options up to the first word that is none, so that a VALUE may begin with "-". False if one is
// wrong.
bool readOptions(int count, char** words, std::string const& known, Options& options) {
    for (int option = 0; (option = getopt(count, words, known.c_str())) != -1;) {
        switch (option) {
            case 'd': BEConfig::DATA_LOCATION = optarg; break;
            case 'w':
                if (!readMilliseconds(optarg, options.milliseconds)) {
                    complain(FAILED, "-w needs a number of milliseconds");
                    return false;
                }
                break;
            case 'r': options.isBare = true; break;
            case 's': options.isString = true; break;
            case 'S': options.showsSecrets = true; break;
            case ':': complain(FAILED, "the option -%c needs a value", optopt); return false;
            default: complain(FAILED, "the option -%c is wrong here", optopt); return false;
        }
    }
    return true;
}

// The library would take a folder that is missing for one without databases, and cut a long name.
void checkFolder() {
    char const* const folder = BEConfig::DATA_LOCATION.c_str();
    struct stat status;
    if (stat(folder, &status) != 0 || !S_ISDIR(status.st_mode)) {
        throw complain(FAILED, "%s: no data folder (option -d)", folder);
    }
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        if (LocalDbCtrl::getFileName(type) == nullptr) {
            throw complain(FAILED, "%s: this name is too long", folder);
        }
    }
}

// No file gets the number of a standard stream that is closed: what is meant for the stream would be
// written to the file. Opened the wrong way round, they fail as before.
void holdStreams() {
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0) {
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

Result run(int count, char** words) {
    Options options;
    opterr = 0;
    if (!readOptions(count, words, "+:d:w:", options) || optind >= count) {
        return explainUsage();
    }
    char const* const name = words[optind++];
    auto const* const command =
        std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
                     [name](Command const& row) { return strcmp(row.name, name) == 0; });
    if (command == std::end(COMMANDS) ||
        !readOptions(count, words, std::string("+:d:w:") + command->options, options) ||
        count - optind < command->least || count - optind > command->most) {
        return explainUsage();
    }
    checkFolder();
    LocalDbCtrl::init();
    return command->run(options, words + optind, count - optind);
}

}  // namespace

}  // namespace vobidb

int main(int count, char** words) {
    using namespace vobidb;
    Result result = FAILED;
    // Messages are written at the end: a terminal that is stopped, or a full pipe, would otherwise keep
    // a database locked.
    static char messages[4096];
    setvbuf(stderr, messages, _IOFBF, sizeof messages);
    holdStreams();
    signal(SIGXFSZ, SIG_IGN);  // a file that may not grow further is a failure like a full disk
    try {
        result = run(count, words);
    } catch (Result thrown) {
        result = thrown;
    } catch (std::bad_alloc const&) {
        complain(FAILED, "out of memory");
    }
    fflush(stderr);
    return fflush(stdout) == 0 && ferror(stdout) == 0
               ? result
               : complain(FAILED, "standard output cannot be written");
}
