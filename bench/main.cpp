// bench [PATTERN] times the workloads; bench --count PATTERN counts instructions, under callgrind.
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "BEConfig.h"
#include "Logger.h"
#include "Workload.h"

namespace {

// The group on, all levels off: what a device runs with when nobody looks for a fault.
void switchOffAllLevels() {
    Logger::mask = ~0U;
    BEConfig::LOG_INFO_ENABLE = 0;
    BEConfig::LOG_WARNING_ENABLE = 0;
    BEConfig::LOG_DEBUG_ENABLE = 0;
    BEConfig::LOG_ERROR_ENABLE = 0;
}

}  // namespace

int main(int argc, char** argv) {
    // standard output is the log's, and leads nowhere
    FILE* const report = fdopen(dup(STDOUT_FILENO), "w");
    if (report == nullptr || freopen("/dev/null", "w", stdout) == nullptr) {
        return 1;
    }
    switchOffAllLevels();
    addLookups();
    addAssignments();
    addHandles();
    addLogLines();
    addFiles();
    addSnapshots();
    addTransactions();
    addChanges();
    addGrowths();
    if (argc == 3 && strcmp(argv[1], "--count") == 0) {
        countInstructions(argv[2]);
        return 0;
    }
    timeWorkloads(argc > 1 ? argv[1] : ".", report);
    return 0;
}
