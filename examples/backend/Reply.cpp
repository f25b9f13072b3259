#include "Reply.h"

#include <TreeMapObject.h>

#include "Json.h"

Reply refuse(int status, std::string const& reason, unsigned int retryAfter) {
    TreeMapObject error(false);
    error.set("error", reason.c_str());
    Reply reply;
    reply.status = status;
    reply.body = textOf(error.jobj);
    reply.retryAfter = retryAfter;
    return reply;
}
