#include "Reply.h"

#include "Json.h"

Reply refuse(int status, std::string const& reason, unsigned int retryAfter) {
    Json const error(json_object_new_object());
    json_object_object_add(error.get(), "error", json_object_new_string(reason.c_str()));
    Reply reply;
    reply.status = status;
    reply.body = textOf(error.get());
    reply.retryAfter = retryAfter;
    return reply;
}
