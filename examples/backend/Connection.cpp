#include "Connection.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "Limits.h"

namespace {

auto const KEEP_ALIVE = std::chrono::seconds(3);
auto const SLICE = std::chrono::milliseconds(200);  // after which the end of the program is noticed

typedef int (*NameOf)(int, sockaddr*, socklen_t*);

void addressOf(int socket, NameOf nameOf, std::string& ip, int& port) {
    sockaddr_storage address = {};
    socklen_t size = sizeof(address);
    char host[NI_MAXHOST] = "";
    char service[NI_MAXSERV] = "";
    if (nameOf(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
        getnameinfo(reinterpret_cast<sockaddr*>(&address), size, host, sizeof(host), service,
                    sizeof(service), NI_NUMERICHOST | NI_NUMERICSERV) == 0) {
        ip = host;
        port = static_cast<int>(strtol(service, nullptr, 10));
    }
}

}  // namespace

Connection::Connection(int socket, SSL_CTX* tls, std::atomic<bool> const& stopping)
    : socket_(socket), isOpen_(true), stopping_(stopping), end_(Clock::now() + REQUEST_TIME) {
    fcntl(socket_, F_SETFL, fcntl(socket_, F_GETFL) | O_NONBLOCK);
    isOpen_ = tls == nullptr || shakeHands(tls);
}

Connection::~Connection() {
    if (tls_ != nullptr) {
        SSL_shutdown(tls_);  // sends a farewell, waits for none
        SSL_free(tls_);
    }
    shutdown(socket_, SHUT_RDWR);
    close(socket_);
}

bool Connection::awaitRequest() {
    end_ = Clock::now() + REQUEST_TIME;
    allowance_ = MAX_REQUEST;
    bool const hasMore = begin_ < received_ || (tls_ != nullptr && SSL_pending(tls_) > 0);
    return isOpen_ && (hasMore || waitFor(POLLIN, Clock::now() + KEEP_ALIVE));
}

bool Connection::waitFor(short events, Clock::time_point end) const {
    while (!stopping_) {
        auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        if (left.count() <= 0) {
            return false;
        }
        pollfd descriptor = {socket_, events, 0};
        int const ready = poll(&descriptor, 1, static_cast<int>(std::min(left, SLICE).count()));
        if (ready != 0) {
            return ready > 0;
        }
    }
    return false;
}

bool Connection::shakeHands(SSL_CTX* tls) {
    tls_ = SSL_new(tls);
    if (tls_ == nullptr || SSL_set_fd(tls_, socket_) != 1) {
        return false;
    }
    for (;;) {
        int const result = SSL_accept(tls_);
        if (result == 1) {
            return true;
        }
        int const error = SSL_get_error(tls_, result);
        bool const wantsMore = error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE;
        if (!wantsMore || !waitFor(error == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT, end_)) {
            return false;
        }
    }
}

bool Connection::is_readable() const { return begin_ < received_ || waitFor(POLLIN, end_); }

bool Connection::is_writable() const { return isOpen_ && waitFor(POLLOUT, end_); }

// What there is, as soon as there is something. 0 at the end, -1 when there is nothing in time.
ssize_t Connection::receive() {
    for (;;) {
        ssize_t const size = tls_ != nullptr ? SSL_read(tls_, buffer_, sizeof(buffer_))
                                             : recv(socket_, buffer_, sizeof(buffer_), 0);
        if (size > 0) {
            return size;
        }
        bool const waits = tls_ != nullptr
                               ? SSL_get_error(tls_, static_cast<int>(size)) == SSL_ERROR_WANT_READ
                               : size < 0 && (errno == EAGAIN || errno == EINTR);
        if (!waits) {
            return size == 0 ? 0 : -1;
        }
        if (!waitFor(POLLIN, end_)) {
            return -1;
        }
    }
}

ssize_t Connection::read(char* bytes, size_t size) {
    if (begin_ == received_) {
        begin_ = received_ = 0;
        ssize_t const more = isOpen_ && allowance_ > 0 && Clock::now() < end_ ? receive() : -1;
        if (more <= 0) {
            isOpen_ = false;
            return more;
        }
        received_ = static_cast<size_t>(more);
    }
    size_t const given = std::min({size, received_ - begin_, allowance_});
    if (given == 0) {
        isOpen_ = false;
        return -1;
    }
    memcpy(bytes, buffer_ + begin_, given);
    begin_ += given;
    allowance_ -= given;
    return static_cast<ssize_t>(given);
}

ssize_t Connection::write(char const* bytes, size_t size) {
    for (;;) {
        ssize_t const sent = tls_ != nullptr ? SSL_write(tls_, bytes, static_cast<int>(size))
                                             : send(socket_, bytes, size, MSG_NOSIGNAL);
        if (sent > 0) {
            return sent;
        }
        bool const waits = tls_ != nullptr
                               ? SSL_get_error(tls_, static_cast<int>(sent)) == SSL_ERROR_WANT_WRITE
                               : sent < 0 && (errno == EAGAIN || errno == EINTR);
        if (!waits || !waitFor(POLLOUT, end_)) {
            isOpen_ = false;
            return -1;
        }
    }
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
    addressOf(socket_, getpeername, ip, port);
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
    addressOf(socket_, getsockname, ip, port);
}
