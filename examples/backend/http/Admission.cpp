// Refuses requests that are not for this server, before anything is done for them.
#include "Admission.h"

#include <BEConfig.h>
#include <arpa/inet.h>
#include <strings.h>

#include <algorithm>

#include "Limits.h"

namespace {

bool contains(std::string const& methods, std::string const& method) {
    return (", " + methods + ",").find(" " + method + ",") != std::string::npos;
}

bool isSame(std::string const& one, std::string const& other) {
    return strcasecmp(one.c_str(), other.c_str()) == 0;
}

// Without the port, and the brackets around an address of IPv6; "" when it is malformed.
std::string hostIn(std::string const& authority) {
    bool const isBracketed = authority.starts_with('[');
    size_t const end = std::min(authority.find(isBracketed ? ']' : ':'), authority.size());
    size_t const port = std::min(end + isBracketed, authority.size());
    bool const isPort = port == authority.size() || authority[port] == ':';
    bool const isMalformed =
        !isPort || authority.find_first_not_of("0123456789", port + 1) != std::string::npos;
    return isMalformed ? "" : authority.substr(isBracketed, end - isBracketed);
}

bool isAddress(std::string const& host) {
    in6_addr address = {};
    return inet_pton(AF_INET, host.c_str(), &address) == 1 ||
           inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

bool isJson(std::string const& contentType) {
    std::string const type = contentType.substr(0, contentType.find_first_of("; \t"));
    return isSame(type, "application/json");
}

// A page elsewhere could read our answers if it came from a name that its maker lets lead to this address.
bool isOurs(std::string const& authority, std::vector<std::string> const& names) {
    std::string const host = hostIn(authority);
    return isAddress(host) || isSame(host, "localhost") ||
           std::any_of(names.begin(), names.end(),
                       [&](std::string const& name) { return isSame(name, host); });
}

bool isForeign(Request const& request) {
    std::string const scheme = BEConfig::ENABLE_HTTPS != 0 ? "https://" : "http://";
    return BEConfig::ENABLE_CROSS_DOMAIN == 0 && request.headers.contains("origin") &&
           !isSame(request.header("origin"), scheme + request.header("host"));
}

}  // namespace

void admit(Request const& request, bool hasBody, std::vector<std::string> const& names) {
    require(isOurs(request.header("host"), names), 421,
            "unknown host: use an address, localhost or a name given at the start");
    require(!isForeign(request), 403, "requests of pages from elsewhere are refused");
    require(request.path.size() <= MAX_URL_PATH, 414, "the path is too long");
    std::string const methods = Routes::methodsAt(request.path);
    if (request.method == "OPTIONS") {
        throw Reply{.status = 204, .headers = {{"Allow", methods}}};
    }
    if (!contains(methods, request.method)) {
        throw refuseMethod(methods);
    }
    require(!hasBody || isJson(request.header("content-type")), 415,
            "the body must be JSON: Content-Type: application/json");
}
