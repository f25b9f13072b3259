// A reply as HTTP.
#ifndef BACKEND_HTTP_RESPONSE_H
#define BACKEND_HTTP_RESPONSE_H

#include <microhttpd.h>

#include "Reply.h"

// With the headers that every response has. The reply must live as long as its request. One that closes the
// connection says so. MHD_NO when there is no memory. Throws std::bad_alloc.
MHD_Result sendReply(MHD_Connection* connection, Reply const& reply, bool closes);

#endif
