// Assignment by path.
#include <benchmark/benchmark.h>
#include <json-c/json_pointer.h>
#include <rapidjson/pointer.h>

#include "ByHand.h"
#include "Gateway.h"
#include "JsonData.h"
#include "TreeMapObject.h"
#include "Workload.h"

namespace {

int const SIZE = 50 << 10;

void set(json_object* root, std::string const& path, int i) {
    json_object* const value = json_object_new_int(i);
    JsonData::setJObj(root, path.c_str(), value);
    json_object_put(value);
}

// `removed` is taken out of "lan.dhcp" again.
Variant rapidJson(std::string const& path, std::string const& removed) {
    rapidjson::Document& document = gateway(SIZE).rapid;
    rapidjson::Value& dhcp = document["lan"]["dhcp"];
    return {"RapidJSON", [&document, &dhcp, pointer = pointerOf(path), removed](int count) {
                for (int i = 0; i < count; ++i) {
                    rapidjson::Pointer(pointer.data(), pointer.size()).Set(document, i);
                    if (!removed.empty()) {
                        dhcp.RemoveMember(removed.c_str());
                    }
                }
            }};
}

template <typename... Steps>
void addExisting(std::string const& path, char const* key, Steps... steps) {
    Gateway& document = gateway(SIZE);
    json_object* const root = document.object;
    Work const product = [root, path](int count) {
        for (int i = 0; i < count; ++i) {
            set(root, path, i);
        }
    };
    Work const limit = [root, key, steps...](int count) {
        for (int i = 0; i < count; ++i) {
            json_object_object_add(byHand(root, steps...), key, json_object_new_int(i));
        }
    };
    std::string const pointer = pointerOf(path);
    Variant const jsonPointer = {"json_pointer", [&document, pointer](int count) {
                                     for (int i = 0; i < count; ++i) {
                                         json_pointer_set(&document.object, pointer.c_str(),
                                                          json_object_new_int(i));
                                     }
                                 }};
    Variant const nlohmannJson = {"nlohmann", [&document, pointer](int count) {
                                      for (int i = 0; i < count; ++i) {
                                          document.nlohmann[nlohmann::json::json_pointer(pointer)] =
                                              i;
                                      }
                                  }};
    add({"set/existing leaf, depth " + std::to_string(sizeof...(steps) + 1),
         product,
         limit,
         {jsonPointer, rapidJson(path, ""), nlohmannJson},
         1.4,
         1.0});
}

// What is new is taken away again, so that it stays new.
void addNewLeaf() {
    json_object* const root = gateway(SIZE).object;
    json_object* const dhcp = byHand(root, "lan", "dhcp");
    Work const product = [=](int count) {
        for (int i = 0; i < count; ++i) {
            set(root, "lan.dhcp.extra", i);
            json_object_object_del(dhcp, "extra");
        }
    };
    Work const limit = [=](int count) {
        for (int i = 0; i < count; ++i) {
            json_object_object_add(byHand(root, "lan", "dhcp"), "extra", json_object_new_int(i));
            json_object_object_del(dhcp, "extra");
        }
    };
    Variant const jsonPointer = {"json_pointer", [=](int count) {
                                     json_object* object = root;
                                     for (int i = 0; i < count; ++i) {
                                         json_pointer_set(&object, "/lan/dhcp/extra",
                                                          json_object_new_int(i));
                                         json_object_object_del(dhcp, "extra");
                                     }
                                 }};
    add({"set/new leaf",
         product,
         limit,
         {jsonPointer, rapidJson("lan.dhcp.extra", "extra")},
         1.3,
         0.85});
}

void addNewLevels() {
    json_object* const root = gateway(SIZE).object;
    json_object* const dhcp = byHand(root, "lan", "dhcp");
    Work const product = [=](int count) {
        for (int i = 0; i < count; ++i) {
            set(root, "lan.dhcp.one.two.three", i);
            json_object_object_del(dhcp, "one");
        }
    };
    Work const limit = [=](int count) {
        for (int i = 0; i < count; ++i) {
            json_object* at = byHand(root, "lan", "dhcp");
            for (char const* key : {"one", "two"}) {
                json_object* const level = json_object_new_object();
                json_object_object_add(at, key, level);
                at = level;
            }
            json_object_object_add(at, "three", json_object_new_int(i));
            json_object_object_del(dhcp, "one");
        }
    };
    // no peer: one makes no levels, another never gives their memory back
    add({"set/three new levels", product, limit, {}, 1.4, 0.0});
}

// Appends a thousand elements to an empty array, and empties it.
void addAppends() {
    int const length = 1000;
    static json_object* const root = json_tokener_parse("{\"list\": []}");
    static TreeMapObject handle(json_object_get(byHand(root, "list")));
    auto const emptied = [](auto const& append) {
        return [append](int count) {
            json_object* const list = byHand(root, "list");
            for (int i = 0; i < count; ++i) {
                append(list, i);
                if (i % length == length - 1 || i == count - 1) {
                    json_object_array_del_idx(list, 0, json_object_array_length(list));
                }
            }
        };
    };
    auto const byHandAppend = [](json_object*, int i) {
        json_object_array_add(byHand(root, "list"), json_object_new_int(i));
    };
    add({"append/by path",
         emptied([](json_object*, int i) { set(root, "list.[1000]", i); }),
         emptied(byHandAppend),
         {},
         2.0,
         0.0});
    add({"append/addArrayItem",
         emptied([](json_object*, int i) { handle.addArrayItem(i); }),
         emptied(
             [](json_object* list, int i) { json_object_array_add(list, json_object_new_int(i)); }),
         {},
         2.0,
         0.0});
}

}  // namespace

void addAssignments() {
    addExisting("lan.dhcp.range.first", "first", "lan", "dhcp", "range");
    addExisting("firewall.zones.[1].groups.[0].name", "name", "firewall", "zones", 1, "groups", 0);
    addExisting("firewall.zones.[1].groups.[0].rules.[3].protocol", "protocol", "firewall", "zones",
                1, "groups", 0, "rules", 3);
    addNewLeaf();
    addNewLevels();
    addAppends();
}
