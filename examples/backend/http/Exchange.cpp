// Collects a request, has it answered by a worker, and resumes its connection.
#include "Exchange.h"

#include <Logger.h>

#include <new>
#include <utility>

#include "Limits.h"
#include "RequestHead.h"
#include "Response.h"

namespace {

// Made at the start, as there may be no memory for them later.
Reply const OUT_OF_MEMORY = {
    .status = 503, .body = R"({"error": "out of memory"})", .headers = {{"Retry-After", "1"}}};
Reply const INTERNAL_ERROR = {500, R"({"error": "internal error"})"};
Reply const STOPPING = {.status = 503,
                        .body = R"({"error": "the back end is stopping"})",
                        .headers = {{"Retry-After", "5"}}};

}  // namespace

Exchange::Exchange(MHD_Connection* connection, Request request, Admission const& admission,
                   Routes& routes)
    : connection_(connection), routes_(routes), request_(std::move(request)) {
    try {
        auto const length = readHead(connection, request_);
        // A short body is read all the same: closing before that could take the reply away from the client.
        isLast_ = length > MAX_UNUSED_BODY;
        admission.check(request_, length != 0);
        if (length > MAX_BODY) {
            throw refuse(413, "the body is too long");
        }
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
    if (received_ > MAX_BODY && !hasReply()) {
        replyWith(refuse(413, "the body is too long"));
    }
    if (!hasReply()) {
        request_.body.append(data, size);
    }
    return received_ <= MAX_UNUSED_BODY;
}

void Exchange::hand(Workers& workers) {
    MHD_suspend_connection(connection_);
    workers.submit(*this);
}

void Exchange::run(bool isStopping) noexcept {
    isLast_ = isStopping;
    reply_ = &STOPPING;
    try {
        if (!isStopping) {
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
    Logger::print(LOG_TYPE_INFO, LOG_GROUP_WSL, "%s %s: %d\n", request_.method.c_str(),
                  request_.address.c_str(), reply_->status);
    return sendReply(connection_, *reply_, isLast_);
}
