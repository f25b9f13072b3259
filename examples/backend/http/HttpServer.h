// The HTTP server. One thread for each port and address family moves bytes and never waits for a client; a few workers
// make the replies.
#pragma once

#include <microhttpd.h>

#include <asio/thread_pool.hpp>
#include <atomic>
#include <mutex>

#include "ConnectionTable.h"
#include "Exchange.h"

class HttpServer {
  public:
    // `names`: host names that requests may use, besides IP addresses.
    HttpServer(Routes& routes, std::vector<std::string> names);

    // Waits for the replies being made, gives them a moment to be sent, and closes every connection.
    ~HttpServer();

    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    // Listens on the ports of BEConfig::WEBSERVER_PORTS, over IPv4 on those that are also in IPV4_ALLOW_PORTS, over IPv6 on
    // those in IPV6_ALLOW_PORTS; on the loopback interface or on all; with TLS if BEConfig::ENABLE_HTTPS is set. Returns
    // false, with the reason on standard error, if a port cannot be used, or there is none.
    bool start(bool onAllInterfaces);

  private:
    struct Callbacks;  // that libmicrohttpd calls

    bool serve(int family, int port, bool onAllInterfaces);

    // Suspends the connection and has a worker make the reply.
    void submit(MHD_Connection* connection, Exchange& exchange);

    Routes& routes_;
    std::vector<std::string> const names_;
    std::string certificate_;  // with its key
    ConnectionTable connections_;
    std::mutex mutex_;  // held to set isStopping_, and to submit: nothing is submitted after that
    std::atomic<bool> isStopping_ = false;
    asio::thread_pool workers_{WORKERS};  // a reply may wait for a lock, a sync, a hash
    std::vector<MHD_Daemon*> daemons_;
};
