// A generated gateway document of a given size, for json-c and for the peers.
#pragma once

#include <json-c/json.h>
#include <rapidjson/document.h>

#include <nlohmann/json.hpp>
#include <string>

// Valid JSON of about `bytes` bytes; its clients and rules grow in number with it.
std::string gatewayText(int bytes);

struct Gateway {
    json_object* object;  // lives until the process ends
    rapidjson::Document rapid;
    nlohmann::json nlohmann;
    int clients;  // length of "lan.dhcp.reservations"
    int rules;    // length of each "firewall.zones.[z].groups.[g].rules"
};

// Made once for each size.
Gateway& gateway(int bytes);

// The path in JSON Pointer form.
std::string pointerOf(std::string const& path);
