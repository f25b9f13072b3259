// The files below the document root, and no others.
#pragma once

#include "Reply.h"

// The file below BEConfig::WEBSERVER_DOCROOT that the request's path names, index.html for "/". Throws 404 for
// everything that is no regular file in there, whatever dots and links lead to it, and for hidden files.
Reply readPage(Request const& request);
