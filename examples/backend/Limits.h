// What one client may ask for. A home gateway has little memory, and many devices talk to it.
#ifndef BACKEND_LIMITS_H
#define BACKEND_LIMITS_H

#include <chrono>
#include <cstddef>

std::size_t const MAX_BODY = 65536;      // bytes of a request's body
std::size_t const MAX_REQUEST = 131072;  // bytes of a whole request
auto const REQUEST_TIME =
    std::chrono::seconds(20);            // from its first byte to the last of its answer
std::size_t const MAX_REQUESTS = 100;    // over one connection
std::size_t const MAX_URL_PATH = 1024;   // characters, decoded
std::size_t const MAX_PATH_TOKENS = 12;  // of a path into a database
std::size_t const MAX_NAME = 32;         // characters of a name in it: as many as a handle keeps
int const MAX_BODY_DEPTH = 16;           // with the path: below what a file may hold
int const MAX_ARRAY_LENGTH = 256;        // elements a POST may fill an array up to
std::size_t const MAX_SESSIONS = 32;
long const MAX_SESSIONS_OF_ONE = 16;      // user
unsigned int const REQUEST_THREADS = 16;  // connections served at once, per port
std::size_t const MAX_WAITING = 64;       // connections accepted and waiting, per port
unsigned int const MAX_WAIT_MS = 500;     // for a busy API type
std::size_t const MAX_FILE = 1 << 20;     // bytes of a file below the document root
std::size_t const LOG_TAIL = 16384;       // bytes of the log that are shown

#endif
