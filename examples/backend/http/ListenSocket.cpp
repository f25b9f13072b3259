// Makes a listening socket of one family.
#include "ListenSocket.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Limits.h"

namespace {

bool setOption(int descriptor, int level, int option, int value) {
    return setsockopt(descriptor, level, option, &value, sizeof(value)) == 0;
}

bool setOptions(int descriptor, int family) {
    return setOption(descriptor, SOL_SOCKET, SO_REUSEADDR, 1) &&
           setOption(descriptor, SOL_SOCKET, SO_SNDBUF,
                     SOCKET_BUFFER) &&  // as those accepted on it
           setOption(descriptor, SOL_SOCKET, SO_RCVBUF, SOCKET_BUFFER) &&
           (family != AF_INET6 || setOption(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, 1));
}

}  // namespace

int listenOn(std::string const& address, int port) {
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
        return -1;
    }
    int descriptor = socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (!setOptions(descriptor, found->ai_family) ||
        bind(descriptor, found->ai_addr, found->ai_addrlen) != 0 ||
        listen(descriptor, SOMAXCONN) != 0) {
        close(descriptor);
        descriptor = -1;
    }
    freeaddrinfo(found);
    return descriptor;
}
