// The open connections of all ports: how many a client may have, and how long each may stay. Safe from any
// thread; nothing throws or allocates.
#pragma once

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
        Clock::time_point end = Clock::time_point::max();  // when it is shut down
    };

    ConnectionTable();

    // One client gets half of the room that is left, and at any time its first connection, and a second one while
    // that is being closed.
    bool hasRoomFor(in6_addr const& client);

    // Begins the time for a handshake. When there are too many, the one whose time is over first is shut down,
    // and when that is not done yet, this one: null. The socket is the caller's, who closes it after close().
    Connection* open(int socket, in6_addr const& client);
    void close(Connection* connection);

    // From now on; then the connection is shut down, whatever its client sends meanwhile.
    void limit(Connection* connection, std::chrono::seconds time);

  private:
    long count() const;
    void watch(std::stop_token const& stop);

    long const maximum_;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    std::array<Connection, MAX_CONNECTIONS + SPARE_CONNECTIONS> connections_;
    std::jthread watcher_;
};
