// The audit: one line of JSON for each change and each login, in a file of bounded size.
#pragma once

#include "Reply.h"

// Both functions are safe from any thread.
//
// A line holds names and no values, so it cannot hold a secret. If the line cannot be written, or there is no memory
// for it, an error is logged and the caller goes on: the change has been made already.
void audit(std::string const& user, std::string const& address, std::string const& what,
           char const* path = "") noexcept;

// Answers with the lines that are kept, as an array, oldest first:
// [{"time": "2026-01-31T12:00:00Z", "user": ..., "address": ..., "what": ..., "path": ...}, ...]
Reply readAudit(Request const& request);
