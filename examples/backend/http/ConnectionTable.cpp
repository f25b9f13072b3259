#include "ConnectionTable.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstring>

namespace {

auto const NEVER = ConnectionTable::Clock::time_point::max();

bool isOpen(ConnectionTable::Connection const& connection) { return connection.socket >= 0; }

// The descriptor is still that of the connection: close() comes before it is closed.
void shutDown(ConnectionTable::Connection& connection) {
    shutdown(connection.socket, SHUT_RDWR);
    connection.end = NEVER;
}

}  // namespace

ConnectionTable::ConnectionTable() : watcher_([this] { watch(); }) {}

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
    long const all = std::count_if(connections_.begin(), connections_.end(), isOpen);
    long const own =
        std::count_if(connections_.begin(), connections_.end(), [&](Connection const& connection) {
            return isOpen(connection) &&
                   std::memcmp(&connection.client, &client, sizeof(client)) == 0;
        });
    return own < std::clamp((MAX_CONNECTIONS - all + 1) / 2, 1L, MAX_CONNECTIONS_OF_ONE);
}

ConnectionTable::Connection* ConnectionTable::open(int socket, in6_addr const& client) {
    std::lock_guard<std::mutex> const guard(mutex_);
    auto* const free = std::find_if_not(connections_.begin(), connections_.end(), isOpen);
    if (free == connections_.end()) {
        return nullptr;
    }
    makeRoom();
    *free = {socket, client, Clock::now(), NEVER};
    return free;
}

void ConnectionTable::makeRoom() {
    auto const waitedSince = [](Connection const& connection) {
        bool const isWaitedFor =
            isOpen(connection) && !connection.isAwaited && connection.end != NEVER;
        return isWaitedFor ? connection.start : NEVER;
    };
    auto* const slowest = std::min_element(connections_.begin(), connections_.end(),
                                           [&](Connection const& one, Connection const& other) {
                                               return waitedSince(one) < waitedSince(other);
                                           });
    long const all = std::count_if(connections_.begin(), connections_.end(), isOpen);
    if (all >= MAX_CONNECTIONS && waitedSince(*slowest) != NEVER) {
        shutDown(*slowest);
    }
}

void ConnectionTable::close(Connection& connection) {
    std::lock_guard<std::mutex> const guard(mutex_);
    connection.socket = -1;
    answered_.notify_all();
}

void ConnectionTable::limit(Connection& connection, std::chrono::seconds time) {
    std::lock_guard<std::mutex> const guard(mutex_);
    connection.start = Clock::now();
    connection.end = connection.start + time;
    if (connection.end < wakeUp_) {
        changed_.notify_all();
    }
}

void ConnectionTable::setAwaited(Connection& connection, bool isAwaited) {
    std::lock_guard<std::mutex> const guard(mutex_);
    connection.isAwaited = isAwaited;
    answered_.notify_all();
}

void ConnectionTable::awaitAnswers(std::chrono::milliseconds time) {
    std::unique_lock<std::mutex> lock(mutex_);
    answered_.wait_for(lock, time, [this] {
        return std::none_of(connections_.begin(), connections_.end(),
                            [](Connection const& connection) {
                                return isOpen(connection) && connection.isAwaited;
                            });
    });
}

void ConnectionTable::watch() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!isStopping_) {
        shutDownOverdue();
        if (wakeUp_ == NEVER) {
            changed_.wait(lock);
        } else {
            changed_.wait_until(lock, wakeUp_);
        }
    }
}

void ConnectionTable::shutDownOverdue() {
    wakeUp_ = NEVER;
    for (Connection& connection : connections_) {
        if (isOpen(connection) && connection.end <= Clock::now()) {
            shutDown(connection);
        }
        if (isOpen(connection)) {
            wakeUp_ = std::min(wakeUp_, connection.end);
        }
    }
}
