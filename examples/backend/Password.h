// Passwords, hashes and random texts.
#pragma once

#include <string>

// Whether `stored`, a hash of crypt(3) by yescrypt or SHA-512, belongs to the password. Takes as long for a text that is not
// a hash as for one that hashOf made. Throws std::bad_alloc.
bool passwordMatches(std::string const& stored, std::string const& password);

// A hash to be stored, with a salt of its own: yescrypt, 8 MiB. Empty when there are no random numbers,
// or no memory.
std::string hashOf(std::string const& password);

// 64 hexadecimal digits from the system's random source; empty when it has none.
std::string randomToken();

// What stands for a token in tables and logs: its keyed hash, by which the token cannot be found.
// Throws std::bad_alloc.
std::string keyedHash(std::string const& secret, std::string const& token);
