#include "Server.h"

#include <BEConfig.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <utility>

namespace {

std::vector<int> portsIn(std::string const& list) {
    std::vector<int> ports;
    std::istringstream text(list);
    for (std::string port; std::getline(text, port, ',');) {
        if (int const number = atoi(port.c_str()); number > 0 && number < 65536) {
            ports.push_back(number);
        }
    }
    return ports;
}

bool contains(std::vector<int> const& ports, int port) {
    return std::find(ports.begin(), ports.end(), port) != ports.end();
}

}  // namespace

Server::Server(Routes& routes, bool onAllInterfaces)
    : routes_(routes), onAllInterfaces_(onAllInterfaces) {}

bool Server::start() {
    if (BEConfig::ENABLE_HTTPS != 0 && !loadCertificate()) {
        return false;
    }
    for (int const port : portsIn(BEConfig::WEBSERVER_PORTS)) {
        bool const four = contains(portsIn(BEConfig::IPV4_ALLOW_PORTS), port);
        bool const six = contains(portsIn(BEConfig::IPV6_ALLOW_PORTS), port);
        if ((four && !bind(AF_INET, onAllInterfaces_ ? "0.0.0.0" : "127.0.0.1", port)) ||
            (six && !bind(AF_INET6, onAllInterfaces_ ? "::" : "::1", port))) {
            return false;
        }
    }
    if (listeners_.empty()) {
        std::fprintf(stderr, "no port to listen on: see webserver_ports and ipv4_allow_ports\n");
        return false;
    }
    for (auto const& listener : listeners_) {
        listener->start();
    }
    for (std::string const& address : addresses_) {
        std::printf("listening on %s\n", address.c_str());
    }
    return true;
}

bool Server::loadCertificate() {
    char const* const file = BEConfig::SSL_CERTIFICATION_FILE.c_str();
    tls_.reset(SSL_CTX_new(TLS_server_method()));
    if (tls_ != nullptr && SSL_CTX_set_min_proto_version(tls_.get(), TLS1_2_VERSION) == 1 &&
        SSL_CTX_use_certificate_chain_file(tls_.get(), file) == 1 &&
        SSL_CTX_use_PrivateKey_file(tls_.get(), file, SSL_FILETYPE_PEM) == 1) {
        SSL_CTX_set_mode(tls_.get(), SSL_MODE_ENABLE_PARTIAL_WRITE);
        return true;
    }
    std::fprintf(stderr, "no certificate and key in %s\n", file);
    return false;
}

bool Server::bind(int family, std::string const& host, int port) {
    auto listener = std::make_unique<Listener>(routes_, tls_.get());
    if (!listener->bind(family, host, port)) {
        std::fprintf(stderr, "cannot listen on port %d of %s\n", port, host.c_str());
        return false;
    }
    std::string const shown = family == AF_INET6 ? "[" + host + "]" : host;
    addresses_.push_back((tls_ != nullptr ? "https://" : "http://") + shown + ":" +
                         std::to_string(port) + "/");
    listeners_.push_back(std::move(listener));
    return true;
}
