// Reads and checks the headers, and refuses requests that are not for this server.
#include "RequestHead.h"

#include <BEConfig.h>
#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

#include "Limits.h"

namespace {

// Names and values in libmicrohttpd's memory, valid as long as the request.
typedef std::vector<std::pair<std::string_view, std::string_view>> Fields;

// The headers that the back end uses. A repeated one is ambiguous.
char const* const HEEDED[] = {"authorization", "content-length", "content-type",
                              "cookie",        "host",           "if-match",
                              "if-none-match", "origin",         "transfer-encoding"};

char const TOKEN_CHARACTERS[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789!#$%&'*+-.^_`|~";

Fields fieldsOf(MHD_Connection* connection, MHD_ValueKind kind) {
    auto const collect = [](void* fields, MHD_ValueKind, char const* name, size_t nameSize,
                            char const* value, size_t size) {
        std::string_view const text = value != nullptr ? std::string_view(value, size) : "";
        static_cast<Fields*>(fields)->emplace_back(std::string_view(name, nameSize), text);
        return MHD_YES;
    };
    int const count = MHD_get_connection_values_n(connection, kind, nullptr, nullptr);
    require(count <= MAX_HEADERS, 400, "too many headers or parameters");
    Fields fields;  // reserved, because an exception must not pass through libmicrohttpd
    fields.reserve(MAX_HEADERS);
    MHD_get_connection_values_n(connection, kind, collect, &fields);
    return fields;
}

bool isToken(std::string_view name) {
    return !name.empty() && name.find_first_not_of(TOKEN_CHARACTERS) == std::string_view::npos;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

// Keeps the headers that are used. Repeated conditions are joined to one list.
void readHeaders(Fields const& fields, Request& request) {
    for (auto const& [field, value] : fields) {
        std::string const name = lowerCase(field);
        bool const isHeeded = std::ranges::count(HEEDED, name) > 0;
        // libmicrohttpd takes the second line of a folded header as a part of its name
        bool const isFolded = !isHeeded && (name.starts_with("content-length") ||
                                            name.starts_with("transfer-encoding"));
        require(isToken(field) && !isFolded && value.find('\r') == std::string_view::npos, 400,
                "malformed header");
        if (isHeeded) {
            auto const [kept, isNew] = request.headers.emplace(name, "");
            bool const isList = name.starts_with("if-");
            require(isNew || isList, 400, "a header is there twice");
            kept->second.append(isNew ? "" : ", ").append(value);
        }
    }
}

std::optional<std::uint64_t> lengthOf(Request const& request) {
    bool const isChunked = request.headers.contains("transfer-encoding");  // also without a value
    bool const isCounted = request.headers.contains("content-length");
    bool const isClear = !isCounted && request.version != "HTTP/1.0" &&
                         lowerCase(request.header("transfer-encoding")) == "chunked";
    require(!isChunked || isClear, 400,
            "unclear length: only Content-Length, or Transfer-Encoding: chunked");
    std::string const text = request.header("content-length");
    std::uint64_t length = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    require(!isCounted || (error == std::errc() && *end == '\0'), 400,
            "Content-Length is not a number");
    return isChunked ? std::nullopt : std::optional(length);
}

// Returns the session's token: programs send "Authorization: Bearer <token>", pages a cookie. MHD_COOKIE_KIND is not used,
// because it ignores case: another server on this host may have a cookie "SESSION".
std::string tokenOf(Request const& request) {
    std::string const scheme = "bearer ";
    std::string const value = request.header("authorization");
    if (!value.empty()) {
        return lowerCase(value.substr(0, scheme.size())) == scheme ? value.substr(scheme.size())
                                                                   : "";
    }
    std::string const name = "; session=";
    std::string const cookies = "; " + request.header("cookie") + name;
    size_t const start = cookies.find(name) + name.size();
    return cookies.substr(start, cookies.find(';', start) - start);
}

// Returns the host without port and brackets; "" if it is malformed.
std::string hostIn(std::string const& authority) {
    bool const isBracketed = authority.starts_with('[');
    size_t const end = std::min(authority.find(isBracketed ? ']' : ':'), authority.size());
    size_t const port = std::min(end + isBracketed, authority.size());
    bool const isPort = port == authority.size() || authority[port] == ':';
    bool const isMalformed =
        !isPort || authority.find_first_not_of("0123456789", port + 1) != std::string::npos;
    return isMalformed ? "" : authority.substr(isBracketed, end - isBracketed);
}

// A name could be one that an attacker has made to resolve to this address (DNS rebinding), so only known names pass.
bool isOurs(std::string const& authority, std::vector<std::string> const& names) {
    std::string const host = lowerCase(hostIn(authority));
    in6_addr address = {};
    return inet_pton(AF_INET, host.c_str(), &address) == 1 ||
           inet_pton(AF_INET6, host.c_str(), &address) == 1 ||
           std::ranges::find(names, host, lowerCase) != names.end();
}

bool isForeign(Request const& request) {
    std::string const scheme = BEConfig::ENABLE_HTTPS != 0 ? "https://" : "http://";
    return BEConfig::ENABLE_CROSS_DOMAIN == 0 && request.headers.contains("origin") &&
           lowerCase(request.header("origin")) != lowerCase(scheme + request.header("host"));
}

}  // namespace

std::optional<std::uint64_t> readHead(MHD_Connection* connection, Request& request) {
    if (request.method == "HEAD") {
        request.method = "GET";  // libmicrohttpd leaves out the body
    } else if (!isToken(request.method) || request.method.size() > MAX_METHOD) {
        request.method = "?";  // keeps it out of the log
    }
    Fields const headers = fieldsOf(connection, MHD_HEADER_KIND);
    Fields const parameters = fieldsOf(connection, MHD_GET_ARGUMENT_KIND);
    request.parameters.insert(parameters.begin(), parameters.end());
    readHeaders(headers, request);
    request.token = tokenOf(request);
    return lengthOf(request);
}

void admit(Request const& request, bool hasBody, std::string const& methods,
           std::vector<std::string> const& names) {
    require(isOurs(request.header("host"), names), 421,
            "unknown host: use an address, localhost or a name given at the start");
    require(!isForeign(request), 403, "requests of pages from elsewhere are refused");
    require(request.path.size() <= MAX_URL_PATH, 414, "the path is too long");
    if (request.method == "OPTIONS") {
        throw Reply{.status = 204, .headers = {{"Allow", methods}}};
    }
    if ((", " + methods + ",").find(" " + request.method + ",") == std::string::npos) {
        throw refuseMethod(methods);
    }
    std::string const type = request.header("content-type");
    require(!hasBody || lowerCase(type.substr(0, type.find_first_of("; \t"))) == "application/json",
            415, "the body must be JSON: Content-Type: application/json");
}
