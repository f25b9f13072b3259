#include "ListenSocket.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>

#include "Limits.h"

namespace {

bool setOption(int descriptor, int level, int option, int value) {
    return setsockopt(descriptor, level, option, &value, sizeof(value)) == 0;
}

}  // namespace

int listenOn(int family, bool onAllInterfaces, int port) {
    sockaddr_in6 six = {};
    six.sin6_family = AF_INET6;
    six.sin6_port = htons(static_cast<std::uint16_t>(port));
    six.sin6_addr = onAllInterfaces ? in6addr_any : in6addr_loopback;
    sockaddr_in four = {};
    four.sin_family = AF_INET;
    four.sin_port = six.sin6_port;
    four.sin_addr.s_addr = htonl(onAllInterfaces ? INADDR_ANY : INADDR_LOOPBACK);
    bool const isSix = family == AF_INET6;
    auto const* const address =
        isSix ? reinterpret_cast<sockaddr*>(&six) : reinterpret_cast<sockaddr*>(&four);

    int const descriptor = socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (setOption(descriptor, SOL_SOCKET, SO_REUSEADDR, 1) &&
        setOption(descriptor, SOL_SOCKET, SO_SNDBUF, SOCKET_BUFFER) &&  // as those accepted from it
        setOption(descriptor, SOL_SOCKET, SO_RCVBUF, SOCKET_BUFFER) &&
        (!isSix || setOption(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, 1)) &&
        bind(descriptor, address, isSix ? sizeof(six) : sizeof(four)) == 0 &&
        listen(descriptor, SOMAXCONN) == 0) {
        return descriptor;
    }
    close(descriptor);
    return -1;
}
