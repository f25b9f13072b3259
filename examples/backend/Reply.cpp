#include "Reply.h"

#include <TreeMapObject.h>

#include <new>

#include "Json.h"

Reply refuse(int status, std::string const& reason, unsigned int retryAfter) {
    TreeMapObject error(false);
    if (error.jobj == nullptr) {
        throw std::bad_alloc();
    }
    error.set("error", reason.c_str());
    Reply reply;
    reply.status = status;
    reply.body = textOf(error.jobj);
    reply.retryAfter = retryAfter;
    return reply;
}

Reply refuseMethod(std::string const& allowed, std::string const& reason) {
    Reply reply = refuse(405, reason);
    reply.headers.emplace_back("Allow", allowed);
    return reply;
}
