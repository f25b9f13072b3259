// Saving one to four databases at once, on a disk: the time is that of the syncs.
#include <stdio.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <utility>

#include "BEConfig.h"
#include "Gateway.h"
#include "LocalDbTransaction.h"
#include "Scratch.h"
#include "Workload.h"

namespace {

namespace fs = std::filesystem;

int syncs = 0;
int savedSyncs = 0;  // the next lock adds one, which removes the record

void changeOnce(int types) {
    LocalDbTransaction change(0, "", "default");
    for (int type = 0; type < types; ++type) {
        TreeMapObject* const document = change.also(static_cast<unsigned int>(type), "");
        document->set("wan.[1].mtu", document->get<int>("wan.[1].mtu") + 1);
    }
    syncs = 0;
    if (change.save() != 0) {
        abort();
    }
    savedSyncs += syncs;
}

// The size is the number of syncs, which has to be so.
Growth::Size changes(int types) {
    int const expected = types == 1 ? 2 : 2 * types + 2;
    return {static_cast<double>(expected), [types, expected](int count) {
                std::string const before = std::exchange(BEConfig::DATA_LOCATION, diskFile("data"));
                savedSyncs = 0;
                for (int i = 0; i < count; ++i) {
                    changeOnce(types);
                }
                BEConfig::DATA_LOCATION = before;
                if (savedSyncs != count * expected) {
                    fprintf(stderr, "%d changes of %d types: %d syncs\n", count, types, savedSyncs);
                    abort();
                }
            }};
}

}  // namespace

// In place of the C library's, also for the libraries.
extern "C" [[gnu::visibility("default")]] int fsync(int fd) {
    ++syncs;
    return static_cast<int>(syscall(SYS_fsync, fd));
}

void addChanges() {
    std::string const before = std::exchange(BEConfig::DATA_LOCATION, diskFile("data"));
    for (unsigned int type = 0; type < 4; ++type) {
        fs::path const file = LocalDbCtrl::getFileName(type);
        fs::create_directories(file.parent_path());
        std::ofstream(file) << gatewayText(2 << 10);
    }
    BEConfig::DATA_LOCATION = before;
    add(Growth{"growth/change on disk, 2, 6, 8, 10 syncs",
               {changes(1), changes(2), changes(3), changes(4)},
               1.2});
}
