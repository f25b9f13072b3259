// What a client sent before the body: read from libmicrohttpd, and not trusted yet.
#ifndef BACKEND_HTTP_REQUESTHEAD_H
#define BACKEND_HTTP_REQUESTHEAD_H

#include <microhttpd.h>

#include <cstdint>
#include <optional>

#include "Routes.h"

// Completes a request, except its body, whose length it returns; nothing when only its end will tell. The headers
// have arrived. Throws a refusal where it is unclear where the request ends, or what it means: what follows on
// this connection must not be taken for a request then.
std::optional<std::uint64_t> readHead(MHD_Connection* connection, Request& request);

#endif
