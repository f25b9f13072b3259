// Serves the files below the document root.
#pragma once

#include "Reply.h"

// Answers with the file below BEConfig::WEBSERVER_DOCROOT that the request's path names; "/" is index.html. Throws 404
// for a hidden file, and for anything that, after links and dots are resolved, is not a regular file below the root.
Reply readPage(Request const& request);
