// Counts the connections of each client, and shuts down those whose time is over.
#include "ConnectionTable.h"

#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>

namespace {

typedef ConnectionTable::Connection Connection;

bool isOpen(Connection const& connection) { return connection.socket >= 0; }

// The descriptor still belongs to the connection, because close() is called before the socket is closed.
void shutDown(Connection& connection) {
    shutdown(connection.socket, SHUT_RDWR);
    connection.end = ConnectionTable::Clock::time_point::max();
}

// Returns how many connections the process's limit of descriptors allows.
long maximumOfConnections() {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    rlim_t const all = MAX_CONNECTIONS + SPARE_CONNECTIONS + OTHER_DESCRIPTORS;
    return std::max(MAX_CONNECTIONS - static_cast<long>(all - std::min(limit.rlim_cur, all)), 1L);
}

}  // namespace

ConnectionTable::ConnectionTable()
    : maximum_(maximumOfConnections()),
      watcher_([this](std::stop_token const& stop) { watch(stop); }) {}

long ConnectionTable::count() const { return std::ranges::count_if(connections_, isOpen); }

bool ConnectionTable::hasRoomFor(in6_addr const& client) {
    std::lock_guard<std::mutex> const guard(mutex_);
    auto const isOwn = [&](Connection const& connection) {
        return isOpen(connection) && std::memcmp(&connection.client, &client, sizeof(client)) == 0;
    };
    long const own = std::ranges::count_if(connections_, isOwn);
    return own < std::clamp((maximum_ - count() + 1) / 2, 2L, MAX_CONNECTIONS_OF_ONE);
}

Connection* ConnectionTable::open(int socket, in6_addr const& client) {
    std::lock_guard<std::mutex> const guard(mutex_);
    auto* const free = std::ranges::find_if_not(connections_, isOpen);
    if (count() >= maximum_) {
        shutDown(*std::ranges::min_element(connections_, {}, &Connection::end));
    }
    if (free == connections_.end()) {
        shutdown(socket, SHUT_RDWR);
        return nullptr;
    }
    *free = {socket, client, Clock::now() + HANDSHAKE_TIME};
    changed_.notify_all();
    return free;
}

void ConnectionTable::close(Connection* connection) {
    std::lock_guard<std::mutex> const guard(mutex_);
    if (connection != nullptr) {
        *connection = Connection();
    }
}

void ConnectionTable::limit(Connection* connection, std::chrono::seconds time) {
    std::lock_guard<std::mutex> const guard(mutex_);
    if (connection != nullptr) {
        connection->end = Clock::now() + time;
    }
}

// Sleeps as long as there are no connections.
void ConnectionTable::watch(std::stop_token const& stop) {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stop.stop_requested()) {
        changed_.wait(lock, stop, [this] { return count() > 0; });
        for (Connection& connection : connections_) {
            if (connection.end <= Clock::now()) {
                shutDown(connection);
            }
        }
        changed_.wait_for(lock, stop, DEADLINE_STEP, [] { return false; });
    }
}
