#include "Response.h"

#include <BEConfig.h>

#include <cctype>
#include <cstdio>
#include <cstring>

namespace {

typedef char const* Header[2];

Header const ALWAYS[] = {
    {"Cache-Control", "no-store"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
};

Header const CROSS_DOMAIN[] = {
    {"Access-Control-Allow-Origin", "*"},
    {"Access-Control-Allow-Headers", "Authorization, Content-Type, If-Match, If-None-Match"},
    {"Access-Control-Allow-Methods", "GET, PUT, POST, DELETE"},
    {"Access-Control-Expose-Headers", "ETag, Location, Retry-After"},
};

// What a URL has no other use for stands for itself.
std::string encode(std::string const& path) {
    std::string encoded;
    for (char const c : path) {
        char code[4] = {c, '\0'};
        auto const byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) == 0 && std::strchr("/-._~", c) == nullptr) {
            std::snprintf(code, sizeof(code), "%%%02X", byte);
        }
        encoded += code;
    }
    return encoded;
}

class Headers {
  public:
    explicit Headers(MHD_Response* response) : response_(response) {}

    void add(char const* name, std::string const& value) {
        isComplete =
            MHD_add_response_header(response_, name, value.c_str()) == MHD_YES && isComplete;
    }

    template <size_t COUNT>
    void add(Header const (&headers)[COUNT]) {
        for (auto const& [name, value] : headers) {
            add(name, value);
        }
    }

    bool isComplete = true;

  private:
    MHD_Response* const response_;
};

}  // namespace

Response makeResponse(Reply const& reply, bool closes) {
    Response response(MHD_create_response_from_buffer(
        reply.body.size(), const_cast<char*>(reply.body.data()), MHD_RESPMEM_PERSISTENT));
    if (response == nullptr) {
        return nullptr;
    }
    Headers headers(response.get());
    headers.add(ALWAYS);
    if (BEConfig::ENABLE_CROSS_DOMAIN != 0) {
        headers.add(CROSS_DOMAIN);
    }
    if (!reply.body.empty()) {
        headers.add("Content-Type", reply.type);
    }
    if (reply.retryAfter != 0) {
        headers.add("Retry-After", std::to_string(reply.retryAfter));
    }
    if (!reply.location.empty()) {
        headers.add("Location", encode(reply.location));
    }
    if (reply.status == 401) {
        headers.add("WWW-Authenticate", "Bearer");
    }
    for (auto const& [name, value] : reply.headers) {
        headers.add(name.c_str(), value);
    }
    if (closes) {
        headers.add("Connection", "close");
    }
    return headers.isComplete ? std::move(response) : nullptr;
}
