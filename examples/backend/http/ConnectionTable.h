// The open connections of all ports: how many a client may have, and how long each may stay. Safe from
// any thread; nothing throws or allocates.
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
        Clock::time_point start;    // of what is awaited from it now
        Clock::time_point end;      // when it is shut down
        bool isAwaited = false;     // by its client
        bool hasBadTarget = false;  // the request that is being read; for its thread alone
    };

    ConnectionTable();
    ~ConnectionTable();

    // One client gets half of the room that is left, the first of one at any time.
    bool hasRoomFor(in6_addr const& client);

    // When there are too many, the one that has kept the server waiting longest is shut down. Null when
    // it is not gone yet. The socket is the caller's, who closes it after close(), not before.
    Connection* open(int socket, in6_addr const& client);
    void close(Connection& connection);

    // From now; a client that takes longer finds its connection shut down, whatever it sends meanwhile.
    void limit(Connection& connection, std::chrono::seconds time);

    // That its answer is being worked on or sent, hence awaited by awaitAnswers().
    void setAwaited(Connection& connection, bool isAwaited);
    void awaitAnswers(std::chrono::milliseconds time);

  private:
    void watch();
    void shutDownOverdue();
    void makeRoom();

    std::mutex mutex_;
    std::condition_variable changed_;  // an end, to earlier than the watcher wakes up
    std::condition_variable answered_;
    std::array<Connection, MAX_CONNECTIONS + SPARE_CONNECTIONS> connections_;
    Clock::time_point wakeUp_;
    bool isStopping_ = false;
    std::thread watcher_;
};

#endif
