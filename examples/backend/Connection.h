// One client's connection, plain or encrypted, as the HTTP library reads it. Bounds what a request may
// take: bytes, and time from its first byte to its last.
#ifndef BACKEND_CONNECTION_H
#define BACKEND_CONNECTION_H

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <string>

class Connection : public httplib::Stream {
  public:
    // Takes the socket over. With a TLS context it begins with a handshake. `stopping` ends every wait.
    Connection(int socket, SSL_CTX* tls, std::atomic<bool> const& stopping);
    ~Connection() override;
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    // Waits for the next request. False when none comes in time, or there can be none.
    bool awaitRequest();

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* bytes, size_t size) override;
    ssize_t write(char const* bytes, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

  private:
    typedef std::chrono::steady_clock Clock;

    bool waitFor(short events, Clock::time_point end) const;
    ssize_t receive();
    bool shakeHands(SSL_CTX* tls);

    int const socket_;
    SSL* tls_ = nullptr;
    bool isOpen_;
    std::atomic<bool> const& stopping_;
    Clock::time_point end_;   // of this request
    size_t allowance_ = 0;    // bytes that it may still have
    char buffer_[4096] = {};  // what was received and not read yet
    size_t begin_ = 0;
    size_t received_ = 0;
};

#endif
