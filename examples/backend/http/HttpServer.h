// HTTP on the ports that the settings name. One thread for each port moves bytes and never waits for a
// client; a few workers answer.
#pragma once

#include <microhttpd.h>

#include <asio/thread_pool.hpp>
#include <atomic>
#include <mutex>

#include "ConnectionTable.h"
#include "Exchange.h"

class HttpServer {
  public:
    // `names`: under which it may be asked, beside IP addresses.
    HttpServer(Routes& routes, std::vector<std::string> names);

    // Gives what is being answered a moment to get through, and closes every connection.
    ~HttpServer();

    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    // Listens on BEConfig::WEBSERVER_PORTS: over IPv4 on those that are also among IPV4_ALLOW_PORTS, over
    // IPv6 on those among IPV6_ALLOW_PORTS; on the loopback interface, or on all. With HTTPS where BEConfig
    // says so. False, with the reason on standard error, when one of them cannot be served, or there is none.
    bool start(bool onAllInterfaces);

  private:
    struct Callbacks;  // of libmicrohttpd

    bool serve(int family, int port, bool onAllInterfaces);

    // Has a worker make the reply, and the connection suspended meanwhile.
    void submit(MHD_Connection* connection, Exchange& exchange);

    Routes& routes_;
    std::vector<std::string> const names_;
    std::string certificate_;  // with its key
    ConnectionTable connections_;
    std::mutex mutex_;  // of the workers' stop: nothing is submitted after it
    std::atomic<bool> isStopping_ = false;
    asio::thread_pool workers_{WORKERS};  // replies may wait: for a lock, a disk, a password's hash
    std::vector<MHD_Daemon*> daemons_;
};
