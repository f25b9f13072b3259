// Who changed what, and who logged in: a line of JSON for each, in a file that is bounded.
#pragma once

#include "Reply.h"

// Both are safe from any thread.
//
// Names only, no values: nothing secret can be in it. When it cannot be written, or there is no memory for
// it, the log says so, and nothing else happens: what it tells of has been done.
void audit(std::string const& user, std::string const& address, std::string const& what,
           char const* path = "") noexcept;

// What is kept, as an array, the oldest first:
// [{"time": "2026-01-31T12:00:00Z", "user": ..., "address": ..., "what": ..., "path": ...}, ...]
Reply readAudit(Request const& request);
