// The open connections of all ports: limits their number per client, and the time of each. Safe from any thread; does not
// throw or allocate.
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
        Clock::time_point end = Clock::time_point::max();  // deadline
    };

    ConnectionTable();

    // A client may have half of the connections that are left, and always two: a second one while the first is being
    // closed.
    bool hasRoomFor(in6_addr const& client);

    // Adds a connection and starts its handshake time. If there are too many, shuts down the one with the earliest
    // deadline; if no entry is free yet, shuts down this one and returns null. The caller owns the socket, and closes it
    // after close().
    Connection* open(int socket, in6_addr const& client);
    void close(Connection* connection);

    // Sets the deadline, counted from now, at which the connection is shut down whatever its client sends.
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
