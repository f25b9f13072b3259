// Makes replies and refusals, and reads bodies.
#include "Reply.h"

#include <JsonData.h>

#include <new>

Reply replyWith(TreeMapObject& value, int status) {
    char const* const text = value.jobj != nullptr ? JsonData::getJson(&value) : "null";
    if (text == nullptr) {
        throw std::bad_alloc();
    }
    return Reply{.status = status, .body = text};
}

Reply refuse(int status, std::string const& reason, unsigned int retryAfter) {
    TreeMapObject error(false);
    error.set("error", reason.c_str());
    if (error.jobj == nullptr) {
        throw std::bad_alloc();
    }
    Reply reply = replyWith(error, status);
    if (retryAfter != 0) {
        reply.headers.emplace_back("Retry-After", std::to_string(retryAfter));
    }
    return reply;
}

void require(bool condition, int status, char const* reason, unsigned int retryAfter) {
    if (!condition) {
        throw refuse(status, reason, retryAfter);
    }
}

Reply refuseMethod(std::string const& allowed) {
    Reply reply = refuse(405, "method not allowed: use " + allowed);
    reply.headers.emplace_back("Allow", allowed);
    return reply;
}

Node parseBody(std::string const& body) {
    JsonFault fault = {};
    Node value(JsonData::parse(body.data(), body.size(), &fault));
    require(value != nullptr || fault.line != 0, 503, fault.reason, 1);
    if (value == nullptr) {
        throw refuse(400, "the body is not one JSON value: line " + std::to_string(fault.line) +
                              ", column " + std::to_string(fault.column) + ": " + fault.reason);
    }
    return value;
}
