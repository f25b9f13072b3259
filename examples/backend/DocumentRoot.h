// The files below the document root, and no others.
#ifndef BACKEND_DOCUMENTROOT_H
#define BACKEND_DOCUMENTROOT_H

#include <string>

#include "Reply.h"

// The file below BEConfig::WEBSERVER_DOCROOT that the (decoded) URL path names, index.html for "/". Throws 404 for
// everything that is no regular file in there, whatever dots and links lead to it, and for hidden files.
Reply readPage(std::string const& urlPath);

#endif
