// Passwords, hashes and random texts.
#ifndef BACKEND_PASSWORD_H
#define BACKEND_PASSWORD_H

#include <string>

// Whether `stored`, "sha256$<salt>$<hex>", belongs to the password. Takes the same time for a text
// that is no hash.
bool passwordMatches(std::string const& stored, std::string const& password);

// 64 hexadecimal digits from the system's random source; empty when it has none.
std::string randomToken();

// What stands for a token in tables and logs: its keyed hash, by which the token cannot be found.
std::string keyedHash(std::string const& secret, std::string const& token);

#endif
