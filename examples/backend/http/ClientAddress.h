// Who a client is: its address, and the network that it shares with nobody else.
#pragma once

#include <netinet/in.h>

#include <string>

// Of IPv4 as ::ffff:a.b.c.d, which is also what a mapped address is; without a scope.
in6_addr addressOf(sockaddr const& peer);

// Whoever has one address of IPv6 has all 2^64 of its network; of IPv4 it has this one.
in6_addr networkOf(in6_addr address);

// 192.0.2.1 or 2001:db8::1
std::string textOf(in6_addr const& address);

// The network of an address that textOf gave: 192.0.2.1 or 2001:db8::/64. What is no address stays.
std::string networkOf(std::string const& address);
