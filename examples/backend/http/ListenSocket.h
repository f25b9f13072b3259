// A socket that listens on one port, for one family of addresses: the other one can have its own.
#ifndef BACKEND_HTTP_LISTENSOCKET_H
#define BACKEND_HTTP_LISTENSOCKET_H

#include <string>

// At an address of this host, such as 127.0.0.1, or :: for all of IPv6. -1 when that is not possible.
int listenOn(std::string const& address, int port);

#endif
