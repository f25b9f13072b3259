// What a client sent before the body: read from libmicrohttpd, and not trusted yet.
#ifndef BACKEND_HTTP_REQUESTHEAD_H
#define BACKEND_HTTP_REQUESTHEAD_H

#include <microhttpd.h>

#include <cstdint>
#include <string>

#include "Routes.h"

struct RequestHead {
    // Of a connection whose headers have arrived. Throws std::bad_alloc.
    RequestHead(MHD_Connection* connection, std::string method, std::string path);

    Request request;  // without body
    bool hasBody = false;
    std::uint64_t length = 0;  // of the body; 0 also when that is not known before its end

    // Why it is unclear where the request ends, or what it means; null when all is well. What follows
    // on this connection then must not be taken for a request.
    char const* fault;
};

#endif
