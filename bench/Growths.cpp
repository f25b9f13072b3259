// How the cost of an operation grows.
#include <benchmark/benchmark.h>

#include "Gateway.h"
#include "JsonData.h"
#include "TreeMapObject.h"
#include "Workload.h"

namespace {

Work lookUps(json_object* root, std::string const& path) {
    return [root, path](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(JsonData::getJObj(root, path.c_str()));
        }
    };
}

Growth::Size depth(int levels) {
    json_object* const root = json_object_new_object();
    std::string path = "member";
    for (int i = 1; i < levels; ++i) {
        path += ".member";
    }
    json_object* const value = json_object_new_int(1);
    JsonData::setJObj(root, path.c_str(), value);
    json_object_put(value);
    return {static_cast<double>(levels), lookUps(root, path)};
}

Growth::Size members(int size) {
    json_object* const root = json_object_new_object();
    for (int i = 0; i < size; ++i) {
        json_object_object_add(root, ("member_" + std::to_string(i)).c_str(),
                               json_object_new_int(i));
    }
    return {1, lookUps(root, "member_" + std::to_string(size / 2))};
}

Growth::Size elements(int size) {
    json_object* const root = json_object_new_array();
    for (int i = 0; i < size; ++i) {
        json_object_array_add(root, json_object_new_int(i));
    }
    return {1, lookUps(root, "[5]")};
}

Growth::Size inDocument(int bytes) {
    return {1, lookUps(gateway(bytes).object, "firewall.zones.[1].groups.[0].name")};
}

Growth::Size found(int bytes) {
    TreeMapObject* const document = new TreeMapObject(json_object_get(gateway(bytes).object));
    return {static_cast<double>(bytes), [document](int count) {
                for (int i = 0; i < count; ++i) {
                    for (TreeMapObject* hit : document->find("host", "client-1")) {
                        delete hit;
                    }
                }
            }};
}

}  // namespace

void addGrowths() {
    add(Growth{"growth/depth 4, 16, 64, 256", {depth(4), depth(16), depth(64), depth(256)}, 1.2});
    add(Growth{
        "growth/members 16, 1024, 65536", {members(16), members(1024), members(65536)}, 1.3});
    add(Growth{
        "growth/elements 10, 1000, 100000", {elements(10), elements(1000), elements(100000)}, 1.3});
    add(Growth{"growth/document 2, 50, 1024 KB",
               {inDocument(2 << 10), inDocument(50 << 10), inDocument(1 << 20)},
               1.2});
    // from where the document is larger than the caches
    add(Growth{"growth/find 4096, 16384 KB", {found(4 << 20), found(16 << 20)}, 1.5});
}
