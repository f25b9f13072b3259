// All databases as one file, and back.
//
//     vobidb backup 1
//     gateway {"users":[...],...}
//     wifi {...}
//     sum 93f1c3a6be10a2d7
//
// Each database is a line. The sum is over all lines before it; it tells a damaged file, and is no
// protection against one that was made.
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <errno.h>
#include <fcntl.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "Tool.h"

namespace vobidb {

namespace {

char const HEAD[] = "vobidb backup 1";

// FNV-1a.
std::string sumLine(std::string const& text) {
    uint64_t sum = 0xcbf29ce484222325;
    for (char const c : text) {
        sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    }
    char line[32];
    snprintf(line, sizeof line, "sum %016" PRIx64 "\n", sum);
    return line;
}

std::vector<unsigned int> typesWithFiles() {
    std::vector<unsigned int> types;
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        if (LocalDbSnapshot(type).status() == LocalDbSnapshot::NO_FILE) {
            complain(DONE, "%s: left out, there is no data file", LocalDbCtrl::getApiDir(type));
        } else {
            saved(type);
            types.push_back(type);
        }
    }
    return types;
}

// What JSON cannot hold, or a reader would refuse, is noticed now and not when it is needed.
std::string backupOf(std::vector<unsigned int> const& types,
                     std::vector<LocalDbSnapshot> const& snapshots) {
    std::string text = std::string(HEAD) + "\n";
    for (size_t i = 0; i < types.size(); ++i) {
        std::string const name = LocalDbCtrl::getApiDir(types[i]);
        std::string const line = lineOf(copyOf(snapshots[i])->jobj);
        parsed(line, "what the data file of " + name + " holds", FAILED);
        text += name + " " + line + "\n";
    }
    return text + sumLine(text);
}

// A folder that may be written, but not read, cannot be synced.
bool syncFolderOf(std::string const& file) {
    size_t const slash = file.rfind('/');
    std::string const folder = slash == std::string::npos ? "." : file.substr(0, slash + 1);
    int const fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    bool const isSynced = fd >= 0 ? fsync(fd) == 0 : errno == EACCES;
    close(fd);
    return isSynced;
}

// By a rename, so that an earlier backup stays until this one is whole.
Result replaceFile(std::string const& file, std::string const& text) {
    WithoutSignals const guard;
    std::string temporary = file + ".XXXXXX";
    int const fd = mkstemp(temporary.data());  // mode 0600
    if (fd < 0) {
        return complain(FAILED, "%s: %s", file.c_str(), strerror(errno));
    }
    bool const isWritten = writeAll(fd, text) && fsync(fd) == 0;
    int const error = errno;
    bool const isClosed = close(fd) == 0;
    if (!isWritten || !isClosed || rename(temporary.c_str(), file.c_str()) != 0) {
        int const reason = isWritten ? errno : error;
        unlink(temporary.c_str());
        return complain(FAILED, "%s: %s", file.c_str(), strerror(reason));
    }
    return syncFolderOf(file)
               ? DONE
               : complain(FAILED, "%s: is written, but a loss of power may undo it", file.c_str());
}

// What is not a file is not replaced by one.
bool isReplaceable(char const* file) {
    struct stat status;
    return lstat(file, &status) != 0 || S_ISREG(status.st_mode);
}

struct Part {
    unsigned int type;
    Node content;
};

Result damaged(char const* file, char const* how) {
    return complain(NOT_VALID, "%s: %s; nothing is changed", file, how);
}

Part partOf(char const* file, std::string const& line) {
    size_t const space = std::min(line.find(' '), line.size());
    unsigned int const type = LocalDbCtrl::getApiType(line.substr(0, space).c_str());
    if (type == API_TYPE_COUNT) {
        throw damaged(file, "has a database that is not known here");
    }
    return {type,
            parsed(line.substr(space),
                   std::string("the database ") + LocalDbCtrl::getApiDir(type) + " in " + file,
                   NOT_VALID)};
}

std::vector<Part> partsOf(char const* file, std::string const& text) {
    std::string const head = std::string(HEAD) + "\n";
    size_t const sumAt = text.rfind("\nsum ") + 1;
    if (text.compare(0, head.size(), head) != 0) {
        throw damaged(file, "is not a backup");
    }
    if (sumAt == 0 || text.substr(sumAt) != sumLine(text.substr(0, sumAt))) {
        throw damaged(file, "is damaged");
    }
    std::vector<Part> parts;
    for (size_t at = head.size(); at < sumAt;) {
        size_t const end = text.find('\n', at);
        parts.push_back(partOf(file, text.substr(at, end - at)));
        unsigned int const type = parts.back().type;
        if (std::count_if(parts.begin(), parts.end(),
                          [type](Part const& part) { return part.type == type; }) > 1) {
            throw damaged(file, "has a database twice");
        }
        at = end + 1;
    }
    return !parts.empty() ? std::move(parts) : throw damaged(file, "has no database");
}

Result restoreParts(Options const& options, std::vector<Part> const& parts) {
    LocalDbTransaction change(parts[0].type, "", "default", awaitChange(options));
    for (Part const& part : parts) {
        TreeMapObject* const document = change ? change.also(part.type, "") : nullptr;
        if (document == nullptr) {
            return explain(change, part.type);
        }
        if (!replaceContent(*document, part.content->jobj)) {
            return complain(NOT_VALID,
                            "%s: is an object here and an array there, or a plain value; nothing "
                            "is changed",
                            LocalDbCtrl::getApiDir(part.type));
        }
    }
    return save(change);
}

}  // namespace

Result backUp(Options const& options, char** words, int) {
    char const* const file = words[0];
    bool const isOutput = strcmp(file, "-") == 0;
    if (!isOutput && !isReplaceable(file)) {
        return complain(FAILED, "%s: not a file", file);
    }
    awaitChange(options);
    std::vector<unsigned int> const types = typesWithFiles();
    std::vector<LocalDbSnapshot> snapshots(types.size());
    if (types.empty()) {
        return complain(NOT_FOUND, "there are no databases");
    }
    if (!LocalDbSnapshot::take(types.data(), static_cast<int>(types.size()), snapshots.data())) {
        return complain(BUSY, "the databases are changed too often, or cannot be read");
    }
    std::string const text = backupOf(types, snapshots);
    if (isOutput) {
        fwrite(text.data(), 1, text.size(), stdout);
        return DONE;
    }
    return replaceFile(file, text);
}

Result restore(Options const& options, char** words, int) {
    return restoreParts(options, partsOf(words[0], contentOf(words[0])));
}

}  // namespace vobidb
