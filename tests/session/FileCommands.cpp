// Commands of golden sessions: files, the shell, and the data location.
#include <stdlib.h>

#include <filesystem>

#include "BEConfig.h"
#include "Session.h"

namespace {

namespace fs = std::filesystem;

void printFile(Call& c) {
    c.result = fs::exists(c.words[1]) ? TempDir::read(c.words[1]) : "no file";
}

// Runs the words as a shell command.
void runShell(Call& c) {
    std::string command;
    for (size_t i = 1; i < c.words.size(); ++i) {
        command += c.words[i] + " ";
    }
    int const status = system(command.c_str());
    c.result = status != 0 ? "status " + std::to_string(status) : "";
}

}  // namespace

Commands const FILE_COMMANDS = {
    {"write", [](Call& c) { TempDir::write(c.words[1], c.word(2)); }},
    {"folder", [](Call& c) { fs::create_directories(c.words[1]); }},
    {"rename", [](Call& c) { fs::rename(c.words[1], c.words[2]); }},
    {"print", printFile},
    {"sh", runShell},
    {"data", [](Call& c) { BEConfig::DATA_LOCATION = c.word(1); }},
    {"sample-data", [](Call&) { BEConfig::DATA_LOCATION = SAMPLE_GATEWAY "/data"; }},
};
