// Handles on nodes, typed values, and the search by value.
#include <benchmark/benchmark.h>
#include <string.h>

#include "ByHand.h"
#include "Gateway.h"
#include "JsonData.h"
#include "TreeMapObject.h"
#include "Workload.h"

namespace {

void addHandle(char const* name, char const* path, double goal) {
    json_object* const root = gateway(50 << 10).object;
    static TreeMapObject document(json_object_get(root));
    Work const product = [path](int count) {
        for (int i = 0; i < count; ++i) {
            delete document.get(path);
        }
    };
    Work const limit = [root, path](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(JsonData::getJObj(root, path));
        }
    };
    add({name, product, limit, {}, goal, 0.0});
}

void addAt() {
    json_object* const list = byHand(gateway(50 << 10).object, "lan", "dhcp", "reservations");
    static TreeMapObject handle(json_object_get(list));
    Work const product = [](int count) {
        for (int i = 0; i < count; ++i) {
            delete handle.at(3);
        }
    };
    Work const limit = [list](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(JsonData::getJObj(list, "[3]"));
        }
    };
    add({"handle/at(3), beside getJObj(\"[3]\")", product, limit, {}, 2.5, 0.0});
}

void addTypedValue() {
    json_object* const root = gateway(50 << 10).object;
    static TreeMapObject document(json_object_get(root));
    Work const product = [](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(document.get<int>("wan.[1].mtu"));
        }
    };
    Work const limit = [root](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(json_object_get_int(byHand(root, "wan", 1, "mtu")));
        }
    };
    add({"handle/get<int>", product, limit, {}, 0.0, 0.0});
}

// Every object with a text member `key` that is `value`, as a program would search for it.
int searched(json_object* at, char const* key, char const* value) {
    int count = 0;
    if (json_object_is_type(at, json_type_object)) {
        json_object_object_foreach(at, name, member) {
            if (json_object_is_type(member, json_type_string)) {
                count +=
                    strcmp(name, key) == 0 && strcmp(json_object_get_string(member), value) == 0
                        ? 1
                        : 0;
            } else {
                count += searched(member, key, value);
            }
        }
    } else if (json_object_is_type(at, json_type_array)) {
        for (size_t i = 0; i < json_object_array_length(at); ++i) {
            count += searched(json_object_array_get_idx(at, i), key, value);
        }
    }
    return count;
}

void addFind() {
    json_object* const root = gateway(1 << 20).object;
    static TreeMapObject document(json_object_get(root));
    Work const product = [](int count) {
        for (int i = 0; i < count; ++i) {
            for (TreeMapObject* hit : document.find("host", "client-77")) {
                delete hit;
            }
        }
    };
    Work const limit = [root](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(searched(root, "host", "client-77"));
        }
    };
    add({"find/1024KB", product, limit, {}, 1.35, 0.0});
}

}  // namespace

void addHandles() {
    addHandle("handle/get(path) beside getJObj, depth 4", "lan.dhcp.range.first", 2.0);
    addHandle("handle/get(path) beside getJObj, depth 6", "firewall.zones.[1].groups.[0].name",
              2.0);
    addAt();
    addTypedValue();
    addFind();
}
