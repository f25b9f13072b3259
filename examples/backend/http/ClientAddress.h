// Client addresses, and the networks by which clients are counted.
#pragma once

#include <netinet/in.h>

#include <string>

// Returns the address without its scope; an IPv4 address as ::ffff:a.b.c.d, like a mapped one.
in6_addr addressOf(sockaddr const& peer);

// Returns the /64 network of an IPv6 address, all of which one client may use; an IPv4 address unchanged.
in6_addr networkOf(in6_addr address);

// Returns 192.0.2.1 or 2001:db8::1.
std::string textOf(in6_addr const& address);

// Returns the network of an address from textOf: 192.0.2.1 or 2001:db8::/64. Any other string is returned unchanged.
std::string networkOf(std::string const& address);
