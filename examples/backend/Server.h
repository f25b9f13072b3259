// The ports that the settings name, listened on.
#ifndef BACKEND_SERVER_H
#define BACKEND_SERVER_H

#include <openssl/ssl.h>

#include <memory>
#include <string>
#include <vector>

#include "Listener.h"

class Server {
  public:
    // Listens on BEConfig::WEBSERVER_PORTS: over IPv4 on those that are also among IPV4_ALLOW_PORTS,
    // over IPv6 on those among IPV6_ALLOW_PORTS. On the loopback interface only, or on all. With
    // HTTPS where BEConfig says so.
    Server(Routes& routes, bool onAllInterfaces);

    // True when all of them are served. False, with the reason on standard error, when one cannot be
    // listened on, or there is none; then nothing is served.
    bool start();

  private:
    struct FreeContext {
        void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
    };

    bool loadCertificate();
    bool bind(int family, std::string const& host, int port);

    Routes& routes_;
    bool const onAllInterfaces_;
    std::unique_ptr<SSL_CTX, FreeContext> tls_;
    std::vector<std::unique_ptr<Listener>> listeners_;
    std::vector<std::string> addresses_;
};

#endif
