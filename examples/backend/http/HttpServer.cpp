#include "HttpServer.h"

#include <BEConfig.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "ClientAddress.h"
#include "Exchange.h"
#include "Limits.h"
#include "ListenSocket.h"

namespace {

auto const ANSWER_TIME = std::chrono::milliseconds(500);  // at the end, to send what is answered

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

ConnectionTable::Connection* placeOf(MHD_Connection* connection) {
    auto const* const info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
    return static_cast<ConnectionTable::Connection*>(info->socket_context);
}

// What cannot be decoded, or is cut short by it.
bool isMalformed(char const* target) {
    for (char const* c = std::strchr(target, '%'); c != nullptr; c = std::strchr(c + 1, '%')) {
        if (std::isxdigit(static_cast<unsigned char>(c[1])) == 0 ||
            std::isxdigit(static_cast<unsigned char>(c[2])) == 0 || (c[1] == '0' && c[2] == '0')) {
            return true;
        }
    }
    return false;
}

}  // namespace

HttpServer::HttpServer(Routes& routes, std::vector<std::string> names)
    : routes_(routes),
      admission_(std::move(names), BEConfig::ENABLE_HTTPS != 0),
      workers_(WORKERS) {}

HttpServer::~HttpServer() {
    workers_.stop();  // hence no connection is suspended, which MHD_stop_daemon requires
    connections_.awaitAnswers(ANSWER_TIME);
    for (MHD_Daemon* const daemon : daemons_) {
        MHD_stop_daemon(daemon);
    }
}

bool HttpServer::start(bool onAllInterfaces) {
    if (BEConfig::ENABLE_HTTPS != 0 && !readCertificate()) {
        return false;
    }
    std::vector<int> const four = portsIn(BEConfig::IPV4_ALLOW_PORTS);
    std::vector<int> const six = portsIn(BEConfig::IPV6_ALLOW_PORTS);
    for (int const port : portsIn(BEConfig::WEBSERVER_PORTS)) {
        if ((contains(four, port) && !listen(AF_INET, onAllInterfaces, port)) ||
            (contains(six, port) && !listen(AF_INET6, onAllInterfaces, port))) {
            return false;
        }
    }
    if (sockets_.empty()) {
        std::fprintf(stderr, "no port to listen on: see webserver_ports and ipv4_allow_ports\n");
        return false;
    }
    if (!std::all_of(sockets_.begin(), sockets_.end(),
                     [this](int socket) { return serve(socket); })) {
        std::fprintf(stderr, "the server cannot be started%s%s\n",
                     certificate_.empty() ? "" : ": no usable certificate and key in ",
                     certificate_.empty() ? "" : BEConfig::SSL_CERTIFICATION_FILE.c_str());
        return false;
    }
    for (std::string const& url : urls_) {
        std::printf("listening on %s\n", url.c_str());
    }
    return true;
}

bool HttpServer::readCertificate() {
    std::ifstream file(BEConfig::SSL_CERTIFICATION_FILE, std::ios::binary);
    certificate_.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (certificate_.empty()) {
        std::fprintf(stderr, "no certificate and key in %s\n",
                     BEConfig::SSL_CERTIFICATION_FILE.c_str());
    }
    return !certificate_.empty();
}

bool HttpServer::listen(int family, bool onAllInterfaces, int port) {
    bool const isSix = family == AF_INET6;
    std::string const host =
        isSix ? (onAllInterfaces ? "[::]" : "[::1]") : (onAllInterfaces ? "0.0.0.0" : "127.0.0.1");
    int const socket = listenOn(family, onAllInterfaces, port);
    if (socket < 0) {
        std::fprintf(stderr, "cannot listen on port %d of %s\n", port, host.c_str());
        return false;
    }
    sockets_.push_back(socket);
    urls_.push_back((certificate_.empty() ? "http://" : "https://") + host + ":" +
                    std::to_string(port) + "/");
    return true;
}

// libmicrohttpd's own limits are off: of time (it limits silence only) and of clients (for one port, by
// whole addresses).
bool HttpServer::serve(int socket) {
    unsigned int const flags = MHD_USE_POLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME |
                               (certificate_.empty() ? 0U : unsigned(MHD_USE_TLS));
    MHD_Daemon* const daemon = MHD_start_daemon(
        flags, 0, onClient, this, onRequest, this,  //
        MHD_OPTION_LISTEN_SOCKET, socket,           //
        MHD_OPTION_CONNECTION_LIMIT,
        static_cast<unsigned int>(MAX_CONNECTIONS + SPARE_CONNECTIONS),                          //
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, MAX_HEAD,                                            //
        MHD_OPTION_STRICT_FOR_CLIENT, 1,                                                         //
        MHD_OPTION_NOTIFY_CONNECTION, onConnection, this,                                        //
        MHD_OPTION_URI_LOG_CALLBACK, onFirstLine, this,                                          //
        MHD_OPTION_NOTIFY_COMPLETED, onEnd, this,                                                //
        certificate_.empty() ? MHD_OPTION_END : MHD_OPTION_HTTPS_MEM_KEY, certificate_.c_str(),  //
        MHD_OPTION_HTTPS_MEM_CERT, certificate_.c_str(),                                         //
        MHD_OPTION_HTTPS_PRIORITIES, "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2",               //
        MHD_OPTION_END);
    if (daemon != nullptr) {
        daemons_.push_back(daemon);
    }
    return daemon != nullptr;
}

MHD_Result HttpServer::onClient(void* self, sockaddr const* address, socklen_t) {
    bool const hasRoom =
        static_cast<HttpServer*>(self)->connections_.hasRoomFor(networkOf(addressOf(*address)));
    return hasRoom ? MHD_YES : MHD_NO;
}

void HttpServer::onConnection(void* self, MHD_Connection* connection, void** context,
                              MHD_ConnectionNotificationCode what) {
    ConnectionTable& table = static_cast<HttpServer*>(self)->connections_;
    if (what == MHD_CONNECTION_NOTIFY_CLOSED) {
        if (*context != nullptr) {
            table.close(*static_cast<Connection*>(*context));
        }
        return;
    }
    int const socket =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    sockaddr const* const peer =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr;
    Connection* const place = table.open(socket, networkOf(addressOf(*peer)));
    *context = place;
    if (place != nullptr) {
        table.limit(*place, HANDSHAKE_TIME);
    } else {
        shutdown(socket, SHUT_RDWR);  // no place is free yet
    }
}

void* HttpServer::onFirstLine(void* self, char const* target, MHD_Connection* connection) {
    if (Connection* const place = placeOf(connection)) {
        place->hasBadTarget = isMalformed(target);
        static_cast<HttpServer*>(self)->connections_.limit(*place, REQUEST_TIME);
    }
    return nullptr;
}

// An exception would have to pass through libmicrohttpd: it ends the connection here.
MHD_Result HttpServer::onRequest(void* self, MHD_Connection* connection, char const* url,
                                 char const* method, char const*, char const* data, size_t* size,
                                 void** exchange) {
    try {
        return static_cast<HttpServer*>(self)->answer(connection, url, method, data, size,
                                                      exchange);
    } catch (...) {
        return MHD_NO;
    }
}

// Called when the headers are there, for each part of the body, at its end, and when a reply is there.
MHD_Result HttpServer::answer(MHD_Connection* connection, char const* url, char const* method,
                              char const* data, size_t* size, void** exchange) {
    Connection* const place = placeOf(connection);
    if (*exchange == nullptr) {
        RequestHead head(connection, method, url);
        if (place == nullptr || place->hasBadTarget) {
            head.fault = "malformed path";
        }
        auto* const begun = new Exchange(connection, std::move(head), admission_, routes_);
        *exchange = begun;
        return begun->isOver() ? begun->send() : MHD_YES;
    }
    Exchange& current = *static_cast<Exchange*>(*exchange);
    if (*size > 0) {
        bool const isTaken = current.receive(data, std::exchange(*size, 0));
        return isTaken ? MHD_YES : MHD_NO;
    }
    if (current.hasReply()) {
        return current.send();
    }
    connections_.setAwaited(*place, true);
    current.hand(workers_);
    return MHD_YES;
}

void HttpServer::onEnd(void* self, MHD_Connection* connection, void** exchange,
                       MHD_RequestTerminationCode) {
    delete static_cast<Exchange*>(std::exchange(*exchange, nullptr));
    if (Connection* const place = placeOf(connection)) {
        ConnectionTable& table = static_cast<HttpServer*>(self)->connections_;
        table.setAwaited(*place, false);
        table.limit(*place, IDLE_TIME);
    }
}
