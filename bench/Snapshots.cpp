// Snapshots: reading in one, making one, and making many from two threads.
#include <benchmark/benchmark.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "Gateway.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "LocalDbSnapshot.h"
#include "Workload.h"

namespace {

char const PATH[] = "wan.[1].mtu";

Work makeAndRead(API_TYPE_T type) {
    return [type](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(LocalDbSnapshot(type).get<int>(PATH));
        }
    };
}

// The limit of two threads is one that does the same work alone: 1.0 would be twice its rate.
Work onTwoThreads(Work const& work) {
    return [work](int count) {
        std::thread other(work, count);
        work(count);
        other.join();
    };
}

void addSnapshots(API_TYPE_T type, int bytes) {
    std::string const file = LocalDbCtrl::getFileName(type);
    std::ofstream(file) << gatewayText(bytes);
    usleep(50000);  // its times are then no longer recent
    static std::vector<std::unique_ptr<LocalDbSnapshot>> all;
    all.emplace_back(new LocalDbSnapshot(type));
    LocalDbSnapshot const* const snapshot = all.back().get();
    json_object* const root = gateway(bytes).object;
    std::string const size = std::to_string(bytes >> 10) + "KB";

    Work const get = [snapshot](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(snapshot->get<int>(PATH));
        }
    };
    Work const lookup = [root](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(json_object_get_int(JsonData::getJObj(root, PATH)));
        }
    };
    add({"snapshot/get " + size, get, lookup, {}, 1.3, 0.0});

    Work const make = [type](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(LocalDbSnapshot(type).version());
        }
    };
    Work const stats = [file](int count) {
        struct stat status;
        for (int i = 0; i < 2 * count; ++i) {
            benchmark::DoNotOptimize(stat(file.c_str(), &status));
        }
    };
    add({"snapshot/make and drop, two stats, " + size, make, stats, {}, 1.0, 0.0});
    add({"snapshot/read on two threads " + size,
         onTwoThreads(makeAndRead(type)),
         makeAndRead(type),
         {},
         2.0 / 1.8,
         0.0});
}

}  // namespace

void addSnapshots() {
    addSnapshots(API_GATEWAY, 12 << 10);
    addSnapshots(API_NETWORK, 126 << 10);
    addSnapshots(API_SERVICE, 634 << 10);
}
