// Appends lines to the audit file, and starts a new file when it is full.
#include "Audit.h"

#include <JsonData.h>
#include <Logger.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "Limits.h"

namespace {

// In the working directory, like the login record.
char const FILE_NAME[] = "audit.jsonl";
char const OLD_FILE_NAME[] = "audit.old.jsonl";

std::mutex ofTheFiles;

std::string now() {
    char text[32] = "";
    std::time_t const seconds = std::time(nullptr);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

// It begins with the line break, so that a line cut short by a full disk does not spoil the next one.
std::string lineOf(std::string const& user, std::string const& address, std::string const& what,
                   char const* path) {
    TreeMapObject entry(false);
    entry.set("time", now().c_str());
    entry.set("user", user.c_str());
    entry.set("address", address.c_str());
    entry.set("what", what.c_str());
    entry.set("path", path);
    std::string text = replyWith(entry).body;
    std::erase(text, '\n');
    return "\n" + text;
}

bool append(std::string const& text) {
    int const file = open(FILE_NAME, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    bool const isWritten = write(file, text.data(), text.size()) == ssize_t(text.size());
    return close(file) == 0 && isWritten;
}

// Skips incomplete lines.
void readInto(TreeMapObject& entries, char const* name) {
    std::ifstream file(name);
    for (std::string line; std::getline(file, line);) {
        Node const entry(JsonData::parse(line.data(), line.size()));
        entries.addArrayItem(entry.get());
    }
}

}  // namespace

void audit(std::string const& user, std::string const& address, std::string const& what,
           char const* path) noexcept {
    try {
        std::string const line = lineOf(user, address, what, path);
        std::lock_guard<std::mutex> const guard(ofTheFiles);
        std::error_code none;
        if (std::filesystem::file_size(FILE_NAME, none) + line.size() > MAX_AUDIT_FILE && !none) {
            std::rename(FILE_NAME, OLD_FILE_NAME);
        }
        if (!append(line)) {
            Logger::print(LOG_TYPE_ERROR, LOG_GROUP_API_AL, "cannot be written to the audit: %s\n",
                          line.c_str() + 1);
        }
    } catch (std::bad_alloc const&) {
        Logger::print(LOG_TYPE_ERROR, LOG_GROUP_API_AL, "no memory for the audit of: %s\n",
                      what.c_str());
    }
}

Reply readAudit(Request const&) {
    std::lock_guard<std::mutex> const guard(ofTheFiles);
    TreeMapObject entries(true);
    readInto(entries, OLD_FILE_NAME);
    readInto(entries, FILE_NAME);
    return replyWith(entries);
}
