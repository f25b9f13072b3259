#include "RequestHead.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

#include "Limits.h"

namespace {

// Name and value in libmicrohttpd's memory, which stays as long as the request.
typedef std::pair<std::string_view, std::string_view> Field;

struct Fields {
    std::array<Field, MAX_HEADERS> list;
    size_t count = 0;
    bool isOverfull = false;
};

// Those the back end heeds. One that is there twice could be read in two ways.
char const* const HEEDED[] = {
    "authorization", "content-length", "content-type",  "cookie", "expect",
    "host",          "if-match",       "if-none-match", "origin", "transfer-encoding"};

MHD_Result collect(void* into, MHD_ValueKind, char const* name, size_t nameSize, char const* value,
                   size_t size) {
    Fields& fields = *static_cast<Fields*>(into);
    fields.isOverfull = fields.count == fields.list.size();
    if (!fields.isOverfull) {
        fields.list[fields.count++] = {{name, nameSize}, {value != nullptr ? value : "", size}};
    }
    return fields.isOverfull ? MHD_NO : MHD_YES;
}

bool isToken(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
               (c != '\0' && std::strchr("!#$%&'*+-.^_`|~", c) != nullptr);
    });
}

bool isPrintable(std::string_view value) {
    return std::none_of(value.begin(), value.end(),
                        [](unsigned char c) { return (c < ' ' && c != '\t') || c == 0x7f; });
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

// Keeps the headers that are heeded. The fault among them, or null.
char const* readHeaders(Fields const& fields, Request& request) {
    for (size_t i = 0; i < fields.count; ++i) {
        auto const& [field, value] = fields.list[i];
        if (!isToken(field) || !isPrintable(value)) {
            return "malformed header";
        }
        std::string const name = lowerCase(field);
        bool const isHeeded =
            std::find(std::begin(HEEDED), std::end(HEEDED), name) != std::end(HEEDED);
        if (!isHeeded &&
            (name.starts_with("content-length") || name.starts_with("transfer-encoding"))) {
            return "malformed header";  // folded: its second line is taken for a part of its name
        }
        if (isHeeded && !request.headers.emplace(name, value).second) {
            return "a header is there twice";
        }
    }
    return nullptr;
}

// The fault of what says how long the body is, or null.
char const* readLength(RequestHead& head) {
    auto const& headers = head.request.headers;
    bool const isChunked = headers.contains("transfer-encoding");
    bool const isCounted = headers.contains("content-length");
    if (isChunked &&
        (isCounted || lowerCase(head.request.header("transfer-encoding")) != "chunked")) {
        return "unclear length: only Content-Length, or Transfer-Encoding: chunked";
    }
    std::string const text = head.request.header("content-length");
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), head.length);
    if (isCounted && (error != std::errc() || *end != '\0')) {
        return "Content-Length is no number";
    }
    head.hasBody = isChunked || head.length > 0;
    return nullptr;
}

// Of the session: for programs as "Authorization: Bearer <token>", for pages as a cookie.
std::string tokenOf(MHD_Connection* connection, Request const& request) {
    std::string const scheme = "Bearer ";
    std::string const value = request.header("authorization");
    if (!value.empty()) {
        return value.starts_with(scheme) ? value.substr(scheme.size()) : "";
    }
    char const* const cookie = MHD_lookup_connection_value(connection, MHD_COOKIE_KIND, "session");
    return cookie != nullptr ? cookie : "";
}

Fields fieldsOf(MHD_Connection* connection, MHD_ValueKind kind) {
    Fields fields;
    MHD_get_connection_values_n(connection, kind, collect, &fields);
    return fields;
}

}  // namespace

RequestHead::RequestHead(MHD_Connection* connection, std::string method, std::string path) {
    request.method = method == "HEAD" ? "GET" : std::move(method);  // the body is left out later
    request.path = std::move(path);
    Fields const headers = fieldsOf(connection, MHD_HEADER_KIND);
    Fields const parameters = fieldsOf(connection, MHD_GET_ARGUMENT_KIND);
    fault = headers.isOverfull || parameters.isOverfull ? "too many headers or parameters"
                                                        : readHeaders(headers, request);
    if (fault == nullptr) {
        fault = readLength(*this);
    }
    for (size_t i = 0; i < parameters.count; ++i) {
        request.parameters.emplace(parameters.list[i]);
    }
    request.token = tokenOf(connection, request);
    expectsAnswer = request.headers.contains("expect");
}
