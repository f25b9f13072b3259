// Knows every connection, its client and its deadline.
#include "ConnectionTable.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstring>

namespace {

auto const NEVER = ConnectionTable::Clock::time_point::max();

bool isOpen(ConnectionTable::Connection const& connection) { return connection.socket >= 0; }

bool endsBefore(ConnectionTable::Connection const& one, ConnectionTable::Connection const& other) {
    return one.end < other.end;
}

// The descriptor is still that of the connection: close() comes before it is closed.
void shutDown(ConnectionTable::Connection& connection) {
    shutdown(connection.socket, SHUT_RDWR);
    connection.end = NEVER;
}

}  // namespace

ConnectionTable::ConnectionTable() {
    connections_.fill({-1, {}, NEVER});
    watcher_ = std::thread([this] { watch(); });
}

ConnectionTable::~ConnectionTable() {
    {
        std::lock_guard<std::mutex> const guard(mutex_);
        isStopping_ = true;
    }
    changed_.notify_all();
    watcher_.join();
}

bool ConnectionTable::hasRoomFor(in6_addr const& client) {
    std::lock_guard<std::mutex> const guard(mutex_);
    auto const isOwn = [&](Connection const& connection) {
        return isOpen(connection) && std::memcmp(&connection.client, &client, sizeof(client)) == 0;
    };
    long const all = std::count_if(connections_.begin(), connections_.end(), isOpen);
    long const own = std::count_if(connections_.begin(), connections_.end(), isOwn);
    return own < std::clamp((MAX_CONNECTIONS - all + 1) / 2, 1L, MAX_CONNECTIONS_OF_ONE);
}

ConnectionTable::Connection* ConnectionTable::open(int socket, in6_addr const& client) {
    std::lock_guard<std::mutex> const guard(mutex_);
    auto* const free = std::find_if_not(connections_.begin(), connections_.end(), isOpen);
    if (std::count_if(connections_.begin(), connections_.end(), isOpen) >= MAX_CONNECTIONS) {
        shutDown(*std::min_element(connections_.begin(), connections_.end(), endsBefore));
    }
    if (free == connections_.end()) {
        return nullptr;
    }
    *free = {socket, client, NEVER};
    return free;
}

void ConnectionTable::close(Connection& connection) {
    std::lock_guard<std::mutex> const guard(mutex_);
    connection = {-1, {}, NEVER};
}

void ConnectionTable::limit(Connection& connection, std::chrono::seconds time) {
    std::lock_guard<std::mutex> const guard(mutex_);
    connection.end = Clock::now() + time;
    if (connection.end < nextLook_) {
        changed_.notify_all();
    }
}

void ConnectionTable::watch() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!isStopping_) {
        auto* const next = std::min_element(connections_.begin(), connections_.end(), endsBefore);
        nextLook_ = next->end;
        if (nextLook_ <= Clock::now()) {
            shutDown(*next);
        } else if (nextLook_ == NEVER) {
            changed_.wait(lock);
        } else {
            changed_.wait_until(lock, nextLook_);
        }
    }
}
