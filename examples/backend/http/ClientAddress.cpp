// Converts addresses, and reduces them to the network that counts as one client.
#include "ClientAddress.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>
#include <iterator>

in6_addr addressOf(sockaddr const& peer) {
    in6_addr address = {};
    if (peer.sa_family == AF_INET6) {
        std::memcpy(&address, &reinterpret_cast<sockaddr_in6 const&>(peer).sin6_addr, 16);
    } else {
        address.s6_addr[10] = address.s6_addr[11] = 0xff;
        std::memcpy(address.s6_addr + 12, &reinterpret_cast<sockaddr_in const&>(peer).sin_addr, 4);
    }
    return address;
}

in6_addr networkOf(in6_addr address) {
    if (!IN6_IS_ADDR_V4MAPPED(&address)) {
        std::fill(std::begin(address.s6_addr) + 8, std::end(address.s6_addr), 0);
    }
    return address;
}

std::string textOf(in6_addr const& address) {
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(AF_INET6, &address, text, sizeof(text));
    return IN6_IS_ADDR_V4MAPPED(&address) ? text + std::strlen("::ffff:") : text;
}

std::string networkOf(std::string const& address) {
    in6_addr six = {};
    return inet_pton(AF_INET6, address.c_str(), &six) == 1 ? textOf(networkOf(six)) + "/64"
                                                           : address;
}
