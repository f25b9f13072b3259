// Writes the generated gateway document as text, section by section.
#include "Gateway.h"

#include <map>
#include <memory>

namespace {

int const BYTES_PER_CLIENT = 157;
int const BYTES_PER_RULE = 243;
int const FIXED_BYTES = 1130;

struct Counts {
    int clients;
    int rules;
};

// A third of what grows is clients, the rest rules in four groups.
Counts countsFor(int bytes) {
    int const growing = bytes > FIXED_BYTES ? bytes - FIXED_BYTES : 0;
    return {growing / 3 / BYTES_PER_CLIENT + 1, growing * 2 / 3 / BYTES_PER_RULE / 4 + 1};
}

template <typename Element>
std::string array(int count, Element const& element) {
    std::string text = "[";
    for (int i = 0; i < count; ++i) {
        text += (i > 0 ? "," : "") + element(i);
    }
    return text + "]";
}

std::string number(int value) { return std::to_string(value); }

std::string network(int i) {
    return R"({"name":"wan)" + number(i) + R"(","mtu":1500,"ipv4":{"address":"203.0.113.)" +
           number(i + 1) + R"(","mask":"255.255.255.0","dns":["198.51.100.1","198.51.100.2"]}})";
}

std::string client(int i) {
    return R"({"host":"client-)" + number(i) + R"(","address":"192.168.)" + number(i / 250) + "." +
           number(i % 250) +
           R"(","mac":"02:00:00:00:00:01","lease":86400,"static":true,"vendor":"unknown",)"
           R"("lastSeen":1700000000,"comment":null})";
}

std::string rule(int i) {
    return R"({"id":)" + number(i) + R"(,"name":"rule-)" + number(i) +
           R"(","protocol":"tcp","action":"accept","enabled":true,"source":{"address":"0.0.0.0",)"
           R"("mask":"0.0.0.0","port":)" +
           number(1024 + i) + R"(},"target":{"address":"192.168.1.)" + number(i % 250) +
           R"(","port":443,"weight":0.5},"schedule":"always","hits":0,"comment":null})";
}

std::string radio(int i) {
    return R"({"ssid":"home-)" + number(i) +
           R"(","channel":6,"security":{"mode":"psk","key":"secret-key"}})";
}

}  // namespace

std::string gatewayText(int bytes) {
    Counts const counts = countsFor(bytes);
    auto const group = [&](int i) {
        return R"({"name":"group-)" + number(i) + R"(","rules":)" + array(counts.rules, rule) + "}";
    };
    auto const zone = [&](int i) {
        return R"({"name":"zone-)" + number(i) + R"(","groups":)" + array(2, group) + "}";
    };
    return R"({"version":7,"device":{"vendor":"none","model":"gw-1","serial":"0001","hardware":"B",)"
           R"("firmware":"1.2.3","built":"2026-01-01","country":"XX","timezone":"UTC","name":"gateway",)"
           R"("uptime":12345,"temperature":41.5,"leds":true},"wan":)" +
           array(2, network) +
           R"(,"lan":{"name":"br0","mtu":1500,"isolated":false,"ipv6":false,"ipv4":{)"
           R"("address":"192.168.1.1","mask":"255.255.0.0"},"igmp":true,"stp":false,"dhcp":{)"
           R"("enabled":true,"lease":86400,"domain":"lan","range":{"first":"192.168.1.10",)"
           R"("last":"192.168.1.250"},"reservations":)" +
           array(counts.clients, client) + R"(}},"wifi":)" + array(2, radio) +
           R"(,"firewall":{"enabled":true,"policy":"drop","zones":)" + array(2, zone) + "}}";
}

Gateway& gateway(int bytes) {
    static std::map<int, std::unique_ptr<Gateway>> made;
    std::unique_ptr<Gateway>& one = made[bytes];
    if (one == nullptr) {
        std::string const text = gatewayText(bytes);
        Counts const counts = countsFor(bytes);
        one.reset(new Gateway{json_tokener_parse(text.c_str()),
                              {},
                              nlohmann::json::parse(text),
                              counts.clients,
                              counts.rules});
        one->rapid.Parse(text.c_str());
    }
    return *one;
}

std::string pointerOf(std::string const& path) {
    std::string pointer = "/";
    for (char c : path) {
        if (c == '.') {
            pointer += '/';
        } else if (c != '[' && c != ']') {
            pointer += c;
        }
    }
    return pointer;
}
