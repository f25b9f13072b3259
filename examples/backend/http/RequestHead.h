// Reads and checks the request line and headers, which are not trusted yet.
#pragma once

#include <microhttpd.h>

#include <cstdint>
#include <optional>

#include "Reply.h"

// Reads the headers and parameters into the request. Returns the length of the body; nullopt for a chunked one. Throws a
// refusal if the end of the request, or its meaning, is ambiguous: the bytes that follow on this connection must not be
// taken for another request.
std::optional<std::uint64_t> readHead(MHD_Connection* connection, Request& request);

// Throws the reply to a request that is refused before anything is counted, read or changed: its Host is neither an IP
// address nor one of the names, it comes from another site's page, its method is not in `methods`, or its body is not said
// to be JSON. Also throws the reply to OPTIONS.
void admit(Request const& request, bool hasBody, std::string const& methods,
           std::vector<std::string> const& names);
