// The limits of the back end: a home gateway has little memory, and many devices talk to it.
#pragma once

#include <chrono>
#include <cstddef>

std::size_t const MAX_BODY = 65536;          // bytes of a request's body
std::size_t const MAX_UNUSED_BODY = 131072;  // bytes of a refused body that are read and dropped
int const MAX_HEADERS = 64;                  // per request; the same for parameters
std::size_t const MAX_METHOD = 16;           // characters
std::size_t const MAX_HEAD = 32768;          // bytes of a request's headers, and of its reply's
int const SOCKET_BUFFER = 65536;             // bytes that the kernel buffers in each direction
long const MAX_CONNECTIONS = 64;             // on all ports together
long const SPARE_CONNECTIONS = 8;        // beyond those, while others are being closed to make room
long const OTHER_DESCRIPTORS = 40;       // files and listening sockets
long const MAX_CONNECTIONS_OF_ONE = 16;  // client
auto const HANDSHAKE_TIME = std::chrono::seconds(10);  // until the first line of the first request
auto const REQUEST_TIME = std::chrono::seconds(20);    // from there to the end of the reply
auto const IDLE_TIME = std::chrono::seconds(5);  // from there to the next request's first line
auto const DEADLINE_STEP = std::chrono::milliseconds(250);  // how often these three are checked
unsigned int const WORKERS = 8;                             // threads that answer requests
std::size_t const MAX_URL_PATH = 1024;                      // characters, decoded
int const MAX_ARRAY_LENGTH = 256;  // elements; POST does not make an array longer
std::size_t const MAX_SESSIONS = 32;
std::size_t const MIN_PASSWORD = 8;  // bytes of a new password
std::size_t const MAX_PASSWORD = 128;
std::size_t const MAX_AUDIT_FILE = 65536;  // bytes; there are two
std::size_t const MAX_UNWRITTEN = 64;      // clients and users whose attempts are only in memory
unsigned int const MAX_CLIENTS = 256;      // clients and users in the login record
long const MAX_SESSIONS_OF_ONE = 16;       // user
unsigned int const MAX_WAIT_MS = 500;      // for a busy API type
std::size_t const MAX_FILE = 1 << 20;      // bytes of a file below the document root
std::size_t const LOG_TAIL = 16384;        // bytes shown of the log
