// What one client may ask for. A home gateway has little memory, and many devices talk to it.
#ifndef BACKEND_LIMITS_H
#define BACKEND_LIMITS_H

#include <cstddef>

std::size_t const MAX_BODY = 65536;      // bytes of a request's body
std::size_t const MAX_URL_PATH = 1024;   // characters, decoded
std::size_t const MAX_PATH_TOKENS = 12;  // of a path into a database
int const MAX_BODY_DEPTH = 16;           // with the path: below what a file may hold
int const MAX_ARRAY_LENGTH = 256;        // elements a POST may fill an array up to
std::size_t const MAX_SESSIONS = 32;
unsigned int const REQUEST_THREADS = 16;  // connections served at once, per port
std::size_t const MAX_WAITING = 64;       // connections accepted and waiting, per port
unsigned int const SOCKET_TIMEOUT = 5;    // seconds without a byte
unsigned int const MAX_WAIT_MS = 500;     // for a busy API type
std::size_t const MAX_FILE = 1 << 20;     // bytes of a file below the document root
std::size_t const LOG_TAIL = 16384;       // bytes of the log that are shown

#endif
