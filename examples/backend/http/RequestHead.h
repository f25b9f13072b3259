// What a client sent before the body: read from libmicrohttpd, and not trusted yet.
#pragma once

#include <microhttpd.h>

#include <cstdint>
#include <optional>

#include "Reply.h"

// Completes a request, except its body, whose length it returns; nothing when only its end will tell. The headers
// have arrived. Throws a refusal where it is unclear where the request ends, or what it means: what follows on
// this connection must not be taken for a request then.
std::optional<std::uint64_t> readHead(MHD_Connection* connection, Request& request);

// Throws the reply to a request that is not let in, before anything is counted, read or changed: for another host, of a
// foreign page, by none of the methods that its path has, with a body that is not JSON. And to OPTIONS. The host may
// be one of the names, or any IP address.
void admit(Request const& request, bool hasBody, std::string const& methods,
           std::vector<std::string> const& names);
