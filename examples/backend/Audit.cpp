// Appends lines to the audit, and starts a new file when one is full.
#include "Audit.h"

#include <JsonData.h>
#include <Logger.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <fstream>

#include "Limits.h"

namespace {

// In the working directory, like the record of logins.
char const FILE_NAME[] = "audit.jsonl";
char const OLD_FILE_NAME[] = "audit.old.jsonl";

std::string now() {
    char text[32] = "";
    std::time_t const seconds = std::time(nullptr);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

// All of the text, or nothing of it.
bool append(std::string const& text) {
    int const file = open(FILE_NAME, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file < 0) {
        return false;
    }
    struct stat before = {};
    bool isWritten = fstat(file, &before) == 0 &&
                     write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (!isWritten && ftruncate(file, before.st_size) != 0) {
        Logger::print(LOG_TYPE_ERROR, LOG_GROUP_API_AL, "a part of a line stays in the audit\n");
    }
    return close(file) == 0 && isWritten;
}

void makeRoomFor(std::string const& text) {
    struct stat file = {};
    if (stat(FILE_NAME, &file) == 0 &&
        static_cast<std::size_t>(file.st_size) + text.size() > MAX_AUDIT_FILE) {
        std::rename(FILE_NAME, OLD_FILE_NAME);
    }
}

// Lines that are not whole are left out.
void readInto(TreeMapObject& entries, char const* name) {
    std::ifstream file(name);
    for (std::string line; std::getline(file, line);) {
        Node const entry(JsonData::parse(line.data(), line.size()));
        entries.addArrayItem(entry.get());
    }
}

}  // namespace

void Audit::record(std::string const& user, std::string const& address, std::string const& what,
                   std::string const& path) {
    TreeMapObject entry(false);
    entry.set("time", now().c_str());
    entry.set("user", user.c_str());
    entry.set("address", address.c_str());
    entry.set("what", what.c_str());
    entry.set("path", path.c_str());
    std::string line = replyWith(entry).body;
    std::erase(line, '\n');
    line += '\n';
    std::lock_guard<std::mutex> const guard(mutex_);
    makeRoomFor(line);
    if (!append(line)) {
        Logger::print(LOG_TYPE_ERROR, LOG_GROUP_API_AL, "cannot be written to the audit: %s",
                      line.c_str());
    }
}

Reply Audit::read() const {
    std::lock_guard<std::mutex> const guard(mutex_);
    TreeMapObject entries(true);
    readInto(entries, OLD_FILE_NAME);
    readInto(entries, FILE_NAME);
    return replyWith(entries);
}
