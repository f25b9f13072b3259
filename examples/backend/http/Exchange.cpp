// Collects a request, makes its reply, and resumes its connection.
#include "Exchange.h"

#include <BEConfig.h>
#include <Logger.h>

#include <new>

#include "Limits.h"
#include "RequestHead.h"

namespace {

typedef decltype(Reply::headers) Headers;

Headers const CROSS_DOMAIN = {
    {"Access-Control-Allow-Origin", "*"},
    {"Access-Control-Allow-Headers", "Authorization, Content-Type, If-Match, If-None-Match"},
    {"Access-Control-Allow-Methods", "GET, PUT, PATCH, POST, DELETE"},
    {"Access-Control-Expose-Headers", "ETag, Location, Retry-After"},
};

// Headers with an empty value are not sent.
Headers headersOf(Reply const& reply, bool closes) {
    Headers headers = {
        {"Cache-Control", reply.etag.empty() ? "no-store" : "no-cache, private"},
        {"Connection", closes ? "close" : ""},
        {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
        {"Content-Type", reply.body.empty() ? "" : reply.type},
        {"ETag", reply.etag},
        {"Referrer-Policy", "no-referrer"},
        {"WWW-Authenticate", reply.status == 401 ? "Bearer" : ""},
        {"X-Content-Type-Options", "nosniff"},
        {"X-Frame-Options", "DENY"},
    };
    headers.insert(headers.end(), reply.headers.begin(), reply.headers.end());
    if (BEConfig::ENABLE_CROSS_DOMAIN != 0) {
        headers.insert(headers.end(), CROSS_DOMAIN.begin(), CROSS_DOMAIN.end());
    }
    return headers;
}

// Made at start-up, because there may be no memory for them later.
Reply const OUT_OF_MEMORY = refuse(503, "out of memory", 1);
Reply const INTERNAL_ERROR = refuse(500, "internal error");
Reply const REFUSED = refuse(503, "the back end is stopping, or out of memory", 5);

}  // namespace

Exchange::Exchange(MHD_Connection* connection, Request request, Routes& routes,
                   std::vector<std::string> const& names)
    : connection_(connection), routes_(routes), request_(std::move(request)) {
    try {
        auto const length = readHead(connection, request_);
        // A short body is read even if it is refused: closing the connection before could lose the reply.
        isLast_ = length > MAX_UNUSED_BODY;
        admit(request_, length != 0, routes.methodsAt(request_.path), names);
        require(length.value_or(0) <= MAX_BODY, 413, "the body is too long");
        request_.body.reserve(length.value_or(0));
    } catch (Reply const& refusal) {
        replyWith(refusal);
    }
}

void Exchange::replyWith(Reply reply) {
    ownReply_ = std::move(reply);
    reply_ = &ownReply_;
}

bool Exchange::receive(char const* data, std::size_t size) {
    received_ += size;
    if (received_ > MAX_BODY && reply_ == nullptr) {
        replyWith(refuse(413, "the body is too long"));
    }
    if (reply_ == nullptr) {
        request_.body.append(data, size);
    }
    return received_ <= MAX_UNUSED_BODY;
}

void Exchange::answer(bool isRefused) noexcept {
    isLast_ = isRefused;
    reply_ = &REFUSED;
    try {
        if (!isRefused) {
            replyWith(routes_.answer(request_));
        }
    } catch (std::bad_alloc const&) {
        reply_ = &OUT_OF_MEMORY;
    } catch (...) {
        reply_ = &INTERNAL_ERROR;
    }
    MHD_resume_connection(connection_);
}

MHD_Result Exchange::send() {
    Reply const& reply = *reply_;
    Logger::print(LOG_TYPE_INFO, LOG_GROUP_WSL, "%s %s: %d\n", request_.method.c_str(),
                  request_.address.c_str(), reply.status);
    std::unique_ptr<MHD_Response, decltype(&MHD_destroy_response)> const response(
        MHD_create_response_from_buffer(reply.body.size(), const_cast<char*>(reply.body.data()),
                                        MHD_RESPMEM_PERSISTENT),
        MHD_destroy_response);
    bool isWhole = response != nullptr;
    for (auto const& [name, value] : headersOf(reply, isLast_)) {
        isWhole = isWhole && (value.empty() || MHD_add_response_header(response.get(), name.c_str(),
                                                                       value.c_str()) == MHD_YES);
    }
    return isWhole ? MHD_queue_response(connection_, static_cast<unsigned>(reply.status),
                                        response.get())
                   : MHD_NO;
}
