// Look-ups by path.
#include <benchmark/benchmark.h>
#include <json-c/json_pointer.h>
#include <rapidjson/pointer.h>

#include <algorithm>
#include <memory>
#include <random>

#include "ByHand.h"
#include "Gateway.h"
#include "JsonData.h"
#include "Workload.h"

namespace {

double const GOAL_OF_LIMIT = 1.3;
double const GOAL_OF_PEER = 0.8;

// Calls `look` with each of the texts in turn.
template <typename Look>
Work inTurn(std::vector<std::string> const& texts, Look const& look) {
    return [texts, look](int count) {
        size_t at = 0;
        for (int i = 0; i < count; ++i) {
            look(texts[at]);
            at = at + 1 < texts.size() ? at + 1 : 0;
        }
    };
}

std::vector<Variant> peersFor(Gateway& document, std::vector<std::string> const& pointers) {
    return {
        {"json_pointer", inTurn(pointers,
                                [&document](std::string const& text) {
                                    json_object* found = nullptr;
                                    json_pointer_get(document.object, text.c_str(), &found);
                                    benchmark::DoNotOptimize(found);
                                })},
        {"RapidJSON",
         inTurn(pointers,
                [&document](std::string const& text) {
                    benchmark::DoNotOptimize(
                        rapidjson::Pointer(text.data(), text.size()).Get(document.rapid));
                })},
        {"nlohmann", inTurn(pointers,
                            [&document](std::string const& text) {
                                nlohmann::json::json_pointer const pointer(text);
                                benchmark::DoNotOptimize(&document.nlohmann.at(pointer));
                            })},
    };
}

template <typename... Steps>
void addPath(int bytes, std::string const& path, Steps... steps) {
    Gateway& document = gateway(bytes);
    json_object* const root = document.object;
    Work const product = [root, path](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(JsonData::getJObj(root, path.c_str()));
        }
    };
    Work const limit = [root, steps...](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(byHand(root, steps...));
        }
    };
    add({"lookup/" + std::to_string(bytes >> 10) + "KB/depth" + std::to_string(sizeof...(steps)),
         product, limit, peersFor(document, {pointerOf(path)}), GOAL_OF_LIMIT, GOAL_OF_PEER});
}

void addDepths(int bytes) {
    addPath(bytes, "version", "version");
    addPath(bytes, "device.name", "device", "name");
    addPath(bytes, "wan.[1].name", "wan", 1, "name");
    addPath(bytes, "lan.dhcp.range.first", "lan", "dhcp", "range", "first");
    addPath(bytes, "lan.dhcp.reservations.[0].host", "lan", "dhcp", "reservations", 0, "host");
    addPath(bytes, "firewall.zones.[1].groups.[0].name", "firewall", "zones", 1, "groups", 0,
            "name");
    addPath(bytes, "firewall.zones.[1].groups.[0].rules.[0]", "firewall", "zones", 1, "groups", 0,
            "rules", 0);
    addPath(bytes, "firewall.zones.[1].groups.[0].rules.[0].protocol", "firewall", "zones", 1,
            "groups", 0, "rules", 0, "protocol");
}

// A way to a leaf: keys and indexes as a program would hold them that has split its paths already.
struct Leaf {
    struct Step {
        char const* key;  // null for an index
        int index;
    };
    std::string path;
    std::vector<Step> steps;
};

void collectLeaves(json_object* at, Leaf const& way, std::vector<Leaf>& leaves) {
    std::string const dot = way.path.empty() ? "" : ".";
    if (json_object_is_type(at, json_type_object)) {
        json_object_object_foreach(at, key, member) {
            Leaf next = {way.path + dot + key, way.steps};
            next.steps.push_back({key, 0});
            collectLeaves(member, next, leaves);
        }
    } else if (json_object_is_type(at, json_type_array)) {
        for (int i = 0; i < static_cast<int>(json_object_array_length(at)); ++i) {
            Leaf next = {way.path + dot + "[" + std::to_string(i) + "]", way.steps};
            next.steps.push_back({nullptr, i});
            collectLeaves(json_object_array_get_idx(at, static_cast<size_t>(i)), next, leaves);
        }
    } else if (at != nullptr) {
        leaves.push_back(way);
    }
}

json_object* byHand(json_object* root, Leaf const& leaf) {
    for (Leaf::Step const& each : leaf.steps) {
        if (!(each.key != nullptr ? step(root, each.key) : step(root, each.index))) {
            return nullptr;
        }
    }
    return root;
}

void addShuffled() {
    Gateway& document = gateway(1 << 20);
    json_object* const root = document.object;
    std::vector<Leaf> leaves;
    collectLeaves(root, {}, leaves);
    std::shuffle(leaves.begin(), leaves.end(), std::minstd_rand(4000));
    leaves.resize(4000);
    std::vector<std::string> paths(leaves.size());
    std::vector<std::string> pointers(leaves.size());
    for (size_t i = 0; i < leaves.size(); ++i) {
        paths[i] = leaves[i].path;
        pointers[i] = pointerOf(leaves[i].path);
    }
    Work const product = inTurn(paths, [root](std::string const& path) {
        benchmark::DoNotOptimize(JsonData::getJObj(root, path.c_str()));
    });
    Work const limit = [root, leaves](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(byHand(root, leaves[static_cast<size_t>(i) % leaves.size()]));
        }
    };
    add({"lookup/1024KB/4000 shuffled paths", product, limit, peersFor(document, pointers), 1.6,
         1.5});
}

// An object of `size` members, each an object, whose middle one is looked up: as the end of a path,
// and on the way to what is in it.
void addMembers(std::string const& prefix, int size) {
    static std::vector<std::unique_ptr<Gateway>> documents;
    std::string text = "{";
    for (int i = 0; i < size; ++i) {
        std::string const number = std::to_string(i);
        text.append(i > 0 ? ",\"" : "\"").append(prefix + number + "\":{\"v\":" + number + "}");
    }
    text += "}";
    documents.emplace_back(
        new Gateway{json_tokener_parse(text.c_str()), {}, nlohmann::json::parse(text), 0, 0});
    Gateway& document = *documents.back();
    document.rapid.Parse(text.c_str());
    json_object* const root = document.object;
    std::string const key = prefix + std::to_string(size / 2);
    Work const last = [root, key](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(byHand(root, key.c_str()));
        }
    };
    Work const middle = [root, key](int count) {
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(byHand(root, key.c_str(), "v"));
        }
    };
    auto const product = [root](std::string const& path) {
        benchmark::DoNotOptimize(JsonData::getJObj(root, path.c_str()));
    };
    std::string const name = "lookup/" + prefix + "* of " + std::to_string(size);
    add({name, inTurn({key}, product), last, peersFor(document, {"/" + key}), 1.6, GOAL_OF_PEER});
    add({name + ", middle", inTurn({key + ".v"}, product), middle,
         peersFor(document, {"/" + key + "/v"}), 1.6, GOAL_OF_PEER});
}

}  // namespace

void addLookups() {
    for (int bytes : {2 << 10, 50 << 10, 1 << 20}) {
        addDepths(bytes);
    }
    addShuffled();
    for (int size : {4, 8, 16, 64, 1024, 16384}) {
        addMembers("m", size);
    }
    for (int size : {8, 16, 1024}) {
        addMembers("configuration_of_client_", size);
    }
}
