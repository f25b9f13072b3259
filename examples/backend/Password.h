// Password hashes, random tokens and their keyed hashes.
#pragma once

#include <string>

// Returns whether `stored`, a crypt(3) hash by yescrypt or SHA-512, matches the password. A string that is not such a hash
// takes as long as one that hashOf made. Throws std::bad_alloc.
bool passwordMatches(std::string const& stored, std::string const& password);

// Returns a yescrypt hash (8 MiB) with a new salt; empty if there are no random numbers or no memory.
std::string hashOf(std::string const& password);

// Returns 64 hexadecimal digits from the system's random source; empty if it fails.
std::string randomToken();

// Returns the keyed hash by which tables and logs name a token; the token cannot be derived from it. Throws
// std::bad_alloc.
std::string keyedHash(std::string const& secret, std::string const& token);
