// Sends a reply with its headers.
#include "Response.h"

#include <BEConfig.h>

#include <algorithm>
#include <memory>

namespace {

typedef std::vector<std::pair<std::string, std::string>> Headers;

Headers const ALWAYS = {
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
};

Headers const CROSS_DOMAIN = {
    {"Access-Control-Allow-Origin", "*"},
    {"Access-Control-Allow-Headers", "Authorization, Content-Type, If-Match, If-None-Match"},
    {"Access-Control-Allow-Methods", "GET, PUT, PATCH, POST, DELETE"},
    {"Access-Control-Expose-Headers", "ETag, Location, Retry-After"},
};

Headers headersOf(Reply const& reply, bool closes) {
    Headers headers = ALWAYS;
    if (BEConfig::ENABLE_CROSS_DOMAIN != 0) {
        headers.insert(headers.end(), CROSS_DOMAIN.begin(), CROSS_DOMAIN.end());
    }
    headers.insert(headers.end(), reply.headers.begin(), reply.headers.end());
    headers.emplace_back("Cache-Control", reply.etag.empty() ? "no-store" : "no-cache, private");
    if (!reply.etag.empty()) {
        headers.emplace_back("ETag", reply.etag);
    }
    if (!reply.body.empty()) {
        headers.emplace_back("Content-Type", reply.type);
    }
    if (reply.status == 401) {
        headers.emplace_back("WWW-Authenticate", "Bearer");
    }
    if (closes) {
        headers.emplace_back("Connection", "close");
    }
    return headers;
}

}  // namespace

MHD_Result sendReply(MHD_Connection* connection, Reply const& reply, bool closes) {
    std::unique_ptr<MHD_Response, decltype(&MHD_destroy_response)> const response(
        MHD_create_response_from_buffer(reply.body.size(), const_cast<char*>(reply.body.data()),
                                        MHD_RESPMEM_PERSISTENT),
        MHD_destroy_response);
    Headers const headers = headersOf(reply, closes);
    bool const isWhole =
        response != nullptr && std::all_of(headers.begin(), headers.end(), [&](auto const& header) {
            return MHD_add_response_header(response.get(), header.first.c_str(),
                                           header.second.c_str()) == MHD_YES;
        });
    return isWhole
               ? MHD_queue_response(connection, static_cast<unsigned>(reply.status), response.get())
               : MHD_NO;
}
