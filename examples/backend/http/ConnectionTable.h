// The open connections of all ports: how many a client may have, and how long each may stay. Safe from any
// thread; nothing throws or allocates.
#ifndef BACKEND_HTTP_CONNECTIONTABLE_H
#define BACKEND_HTTP_CONNECTIONTABLE_H

#include <netinet/in.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "Limits.h"

class ConnectionTable {
  public:
    typedef std::chrono::steady_clock Clock;

    struct Connection {
        int socket = -1;  // none
        in6_addr client = {};
        Clock::time_point end;  // when it is shut down
    };

    ConnectionTable();
    ~ConnectionTable();

    // One client gets half of the room that is left, and its first connection at any time.
    bool hasRoomFor(in6_addr const& client);

    // When there are too many, the one whose time is over first is shut down. Null when that is not done
    // yet. The socket is the caller's, who closes it after close(), not before.
    Connection* open(int socket, in6_addr const& client);
    void close(Connection& connection);

    // From now on; then the connection is shut down, whatever its client sends meanwhile.
    void limit(Connection& connection, std::chrono::seconds time);

  private:
    void watch();

    std::mutex mutex_;
    std::condition_variable changed_;  // some time is over before the watcher looks again
    std::array<Connection, MAX_CONNECTIONS + SPARE_CONNECTIONS> connections_;
    Clock::time_point nextLook_;
    bool isStopping_ = false;
    std::thread watcher_;
};

#endif
