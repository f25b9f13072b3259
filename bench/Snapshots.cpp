// What is read from files once and then shared: snapshots, alone, from two threads and beside a
// writer, and the schemas of validations.
#include <benchmark/benchmark.h>
#include <jsonschema.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include "Gateway.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "LocalDbSnapshot.h"
#include "TreeMapObject.h"
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

// The times of single calls for a while, in nanoseconds, sorted.
std::vector<double> timesOf(Work const& work) {
    using Clock = std::chrono::steady_clock;
    std::vector<double> times;
    auto const end = Clock::now() + std::chrono::seconds(2);
    for (auto start = Clock::now(); start < end;) {
        work(1);
        auto const now = Clock::now();
        times.push_back(std::chrono::duration<double, std::nano>(now - start).count());
        start = now;
    }
    std::sort(times.begin(), times.end());
    return times;
}

// The same while a thread saves the document ten times a second.
std::vector<double> timesBesideAWriter(API_TYPE_T type, Work const& work) {
    std::atomic<bool> ends = false;
    std::thread writer([type, &ends] {
        while (!ends) {
            TreeMapObject* const document = LocalDbCtrl::lockDbObject(type, "", "default");
            document->set(PATH, document->get<int>(PATH) + 1);
            LocalDbCtrl::saveDbObject(type, "default");
            usleep(100000);
        }
    });
    std::vector<double> times = timesOf(work);
    ends = true;
    writer.join();
    return times;
}

// Of a hundred reads beside a writer, at least fifty take at most 1.5 times as long as half of those
// alone, and 99 that and one reading and parsing of the file.
void addLatency(API_TYPE_T type, int bytes) {
    std::string const file = LocalDbCtrl::getFileName(type);
    std::string const name = "snapshot/beside a writer " + std::to_string(bytes >> 10) + "KB";
    auto const measure = [type, file](benchmark::State& state) {
        Work const read = makeAndRead(type);
        std::vector<double> const alone = timesOf(read);
        std::vector<double> const beside = timesBesideAWriter(type, read);
        std::vector<double> const parsing =
            timesOf([file](int) { delete JsonData::createObjectFromFile(file.c_str()); });
        auto const at = [](std::vector<double> const& times, double share) {
            return times[static_cast<size_t>(share * static_cast<double>(times.size() - 1))];
        };
        double const half = at(beside, 0.5);
        double const most = at(beside, 0.99);
        double const halfGoal = 1.5 * at(alone, 0.5);
        double const mostGoal = halfGoal + at(parsing, 0.5);
        bool const met = half <= halfGoal && most <= mostGoal;
        char line[200];
        snprintf(line, sizeof line,
                 "half within %.1f us (goal %.1f), 99 %% within %.1f us (goal %.1f)%s", half / 1e3,
                 halfGoal / 1e3, most / 1e3, mostGoal / 1e3, met ? "" : "  NOT MET");
        for (auto _ : state) {
            state.SetIterationTime(half / 1e9);
        }
        state.SetLabel(line);
        state.counters["met"] = met ? 1.0 : 0.0;
    };
    benchmark::RegisterBenchmark(name.c_str(), measure)->Iterations(1)->UseManualTime();
}

void addValidation() {
    static char const schemaText[] =
        "{\"$schema\": \"http://json-schema.org/draft-07/schema#\", \"type\": \"object\","
        " \"required\": [\"username\", \"password\"], \"additionalProperties\": false,"
        " \"properties\": {\"username\": {\"type\": \"string\", \"minLength\": 1,"
        " \"maxLength\": 64}, \"password\": {\"type\": \"string\", \"minLength\": 1,"
        " \"maxLength\": 128}}}";
    static char const text[] =
        "{\n  \"username\":\"admin\",\n  \"password\":\"sample-admin-password\"\n}";
    std::string const file = LocalDbCtrl::getSchemaFile(API_GATEWAY, 0);
    std::ofstream(file) << schemaText;
    usleep(50000);
    static TreeMapObject* const request = new TreeMapObject(text);
    static json_object* const schema = json_tokener_parse(schemaText);
    Work const validate = [](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(LocalDbCtrl::validateObject(request, API_GATEWAY, 0));
        }
    };
    Work const byHand = [file](int count) {
        struct stat status;
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(stat(file.c_str(), &status));
            benchmark::DoNotOptimize(json_validate_instance(request->jobj, schema));
        }
    };
    Work const parse = [](int count) {
        for (int i = 0; i < count; ++i) {
            json_object_put(json_tokener_parse(text));
        }
    };
    add({"validate/login request", validate, byHand, {{"parsing it", parse}}, 1.3, 2.5});
}

}  // namespace

void addSnapshots() {
    addSnapshots(API_GATEWAY, 12 << 10);
    addSnapshots(API_NETWORK, 126 << 10);
    addSnapshots(API_SERVICE, 634 << 10);
    addLatency(API_GATEWAY, 12 << 10);
    addLatency(API_NETWORK, 126 << 10);
    addLatency(API_SERVICE, 634 << 10);
    addValidation();
}
