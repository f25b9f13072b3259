// Collects a request, has it answered by a worker, and resumes its connection.
#include "Exchange.h"

#include <Logger.h>

#include <new>
#include <utility>

#include "Limits.h"
#include "Response.h"

namespace {

// Made at the start, as there may be no memory for them later.
Reply const OUT_OF_MEMORY = {503, R"({"error": "out of memory"})", "application/json", 1};
Reply const INTERNAL_ERROR = {500, R"({"error": "internal error"})"};
Reply const STOPPING = {503, R"({"error": "the back end is stopping"})", "application/json", 5};

}  // namespace

Exchange::Exchange(MHD_Connection* connection, RequestHead head, Admission const& admission,
                   Routes& routes)
    : connection_(connection), routes_(routes), request_(std::move(head.request)) {
    if (head.fault != nullptr) {
        replyWith(refuse(400, head.fault));
    } else if (std::optional<Reply> reply = admission.answer(request_, head.hasBody)) {
        replyWith(std::move(*reply));
    } else if (head.length > MAX_BODY) {
        replyWith(refuse(413, "the body is too long"));
    } else {
        request_.body.reserve(head.length);
    }
    // A short body is read all the same: closing before that could take the reply away from the client.
    isLast_ = head.fault != nullptr || head.length > MAX_UNUSED_BODY;
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
