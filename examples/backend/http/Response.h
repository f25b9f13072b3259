// A reply as HTTP.
#ifndef BACKEND_HTTP_RESPONSE_H
#define BACKEND_HTTP_RESPONSE_H

#include <microhttpd.h>

#include <memory>
#include <string>

#include "Reply.h"

struct DestroyResponse {
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
typedef std::unique_ptr<MHD_Response, DestroyResponse> Response;

// With the headers that every response has. Null when there is no memory. The reply must live as long as
// the response. One that closes its connection says so.
Response makeResponse(Reply const& reply, bool closes);

#endif
