// A socket that listens on one port, for one family of addresses: the other one can have its own.
#ifndef BACKEND_HTTP_LISTENSOCKET_H
#define BACKEND_HTTP_LISTENSOCKET_H

// On the loopback interface, or on all. -1 when that is not possible.
int listenOn(int family, bool onAllInterfaces, int port);

#endif
