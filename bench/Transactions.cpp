// Transactions that only read, and finding a session's controller.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <fstream>

#include "ByHand.h"
#include "Gateway.h"
#include "LocalDbCtrl.h"
#include "LocalDbTransaction.h"
#include "TreeMapObject.h"
#include "Workload.h"

namespace {

char const PATH[] = "wan.[1].mtu";
char const SESSION[] = "session";

// Lock, one value, and the end of the scope.
Work transaction(API_TYPE_T type, char const* key, LocalDbTransaction::Mode mode) {
    return [type, key, mode](int count) {
        for (int i = 0; i < count; ++i) {
            LocalDbTransaction const lock(type, "", key, 0, mode);
            benchmark::DoNotOptimize(lock->get<int>(PATH));
        }
    };
}

// The document stays in its file: a discard drops it.
void addFromFile(API_TYPE_T type, int bytes) {
    std::string const file = LocalDbCtrl::getFileName(type);
    std::ofstream(file) << gatewayText(bytes);
    Work const limit = [file](int count) {
        for (int i = 0; i < count; ++i) {
            json_object* const document = json_object_from_file(file.c_str());
            benchmark::DoNotOptimize(json_object_get_int(byHand(document, "wan", 1, "mtu")));
            json_object_put(document);
        }
    };
    add({"transaction/read the file, discard " + std::to_string(bytes >> 10) + "KB",
         transaction(type, "default", LocalDbTransaction::WRITE),
         limit,
         {},
         1.2,
         0.0});
}

// The session holds its documents in memory.
void addInMemory() {
    LocalDbCtrl::cloneNewDB(SESSION);
    add(Growth{"growth/transaction READ, 12, 126, 634 KB",
               {{1, transaction(API_WIFI, SESSION, LocalDbTransaction::READ)},
                {1, transaction(API_SECURITY, SESSION, LocalDbTransaction::READ)},
                {1, transaction(API_QOS, SESSION, LocalDbTransaction::READ)}},
               1.3});
}

// Looks each session up in turn. All of them share one controller, and are registered only
// meanwhile.
Growth::Size sessions(int total) {
    std::vector<std::string> keys;
    auto* const registry = new std::map<std::string, LOCALDB_HANDLER*>(LocalDbCtrl::controllers);
    for (int i = 0; i < total; ++i) {
        keys.push_back(std::to_string(1000003L * (i + 1) % 999983) + "-key-of-a-web-session");
        (*registry)[keys.back()] = LocalDbCtrl::controllers.at("default");
    }
    return {
        1, [keys, registry](int count) {
            LocalDbCtrl::controllers.swap(*registry);
            for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
                benchmark::DoNotOptimize(LocalDbCtrl::getDBByKey(keys[i % keys.size()].c_str()));
            }
            LocalDbCtrl::controllers.swap(*registry);
        }};
}

}  // namespace

void addTransactions() {
    addFromFile(API_WIFI, 12 << 10);
    addFromFile(API_SECURITY, 126 << 10);
    addFromFile(API_QOS, 634 << 10);
    addInMemory();
    add(Growth{"growth/getDBByKey, 10, 10000 sessions", {sessions(10), sessions(10000)}, 4.0});
}
