// HTTP around the routes: ports, limits, headers.
#ifndef BACKEND_SERVER_H
#define BACKEND_SERVER_H

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Routes.h"

namespace httplib {
class Server;
}

class Server {
  public:
    // Listens on BEConfig::WEBSERVER_PORTS: over IPv4 on those that are also among IPV4_ALLOW_PORTS,
    // over IPv6 on those among IPV6_ALLOW_PORTS. On the loopback interface only, or on all. With
    // HTTPS where BEConfig says so.
    Server(Routes& routes, bool onAllInterfaces);
    ~Server();

    // False, with the reason on standard error, when a port cannot be listened on, or there is none.
    bool start();

  private:
    bool listen(int port, int family, std::string const& host);

    Routes& routes_;
    bool const onAllInterfaces_;
    std::vector<std::unique_ptr<httplib::Server>> listeners_;
    std::vector<std::thread> threads_;
};

#endif
