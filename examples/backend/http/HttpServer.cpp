// Starts and stops a libmicrohttpd daemon for each port and address family, and handles its callbacks.
#include "HttpServer.h"

#include <BEConfig.h>
#include <sys/socket.h>

#include <asio/post.hpp>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "ClientAddress.h"
#include "Limits.h"

namespace {

typedef ConnectionTable::Connection Connection;

auto const FAREWELL = std::chrono::milliseconds(100);  // time to send the last replies

std::set<int> portsIn(std::string const& list) {
    std::set<int> ports;
    std::istringstream text(list);
    for (std::string port; std::getline(text, port, ',');) {
        if (int const number = atoi(port.c_str()); number > 0 && number < 65536) {
            ports.insert(number);
        }
    }
    return ports;
}

// Decodes a part of a URL in place. An invalid escape, or an escaped NUL, turns it into a control character, which is
// refused later.
size_t decode(void*, MHD_Connection*, char* text) {
    for (char const* c = std::strchr(text, '%'); c != nullptr; c = std::strchr(c + 1, '%')) {
        if (std::isxdigit(static_cast<unsigned char>(c[1])) == 0 ||
            std::isxdigit(static_cast<unsigned char>(c[2])) == 0 || (c[1] == '0' && c[2] == '0')) {
            std::strcpy(text, "\x1a");
            return 1;
        }
    }
    return MHD_http_unescape(text);
}

}  // namespace

HttpServer::HttpServer(Routes& routes, std::vector<std::string> names)
    : routes_(routes), names_(std::move(names)) {}

HttpServer::~HttpServer() {
    {
        std::lock_guard<std::mutex> const guard(mutex_);
        isStopping_ = true;
    }
    workers_.join();  // so that no connection is suspended, as MHD_stop_daemon requires
    std::this_thread::sleep_for(FAREWELL);
    for (MHD_Daemon* const daemon : daemons_) {
        MHD_stop_daemon(daemon);
    }
}

bool HttpServer::start(bool onAllInterfaces) {
    std::ifstream file(BEConfig::SSL_CERTIFICATION_FILE, std::ios::binary);
    certificate_.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    std::set<int> const four = portsIn(BEConfig::IPV4_ALLOW_PORTS);
    std::set<int> const six = portsIn(BEConfig::IPV6_ALLOW_PORTS);
    for (int const port : portsIn(BEConfig::WEBSERVER_PORTS)) {
        if ((four.contains(port) && !serve(AF_INET, port, onAllInterfaces)) ||
            (six.contains(port) && !serve(AF_INET6, port, onAllInterfaces))) {
            return false;
        }
    }
    if (daemons_.empty()) {
        std::fprintf(stderr, "no port to listen on: see webserver_ports and ipv4_allow_ports\n");
    }
    return !daemons_.empty();
}

struct HttpServer::Callbacks {
    static MHD_Result isLetIn(void* self, sockaddr const* peer, socklen_t) {
        in6_addr const client = networkOf(addressOf(*peer));
        return static_cast<HttpServer*>(self)->connections_.hasRoomFor(client) ? MHD_YES : MHD_NO;
    }

    static void onConnection(void* self, MHD_Connection* connection, void** place,
                             MHD_ConnectionNotificationCode what) {
        ConnectionTable& table = static_cast<HttpServer*>(self)->connections_;
        if (what == MHD_CONNECTION_NOTIFY_STARTED) {
            int const socket =
                MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
            setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &SOCKET_BUFFER, sizeof(SOCKET_BUFFER));
            setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &SOCKET_BUFFER, sizeof(SOCKET_BUFFER));
            *place = table.open(socket, networkOf(peerOf(connection)));
        } else {
            table.close(static_cast<Connection*>(*place));
        }
    }

    static void* onFirstLine(void* self, char const*, MHD_Connection* connection) {
        limit(self, connection, REQUEST_TIME);
        return nullptr;
    }

    // Called when the headers have arrived, for each part of the body, at its end, and when the connection is resumed. An
    // exception must not pass through libmicrohttpd, so it ends the connection.
    static MHD_Result onRequest(void* self, MHD_Connection* connection, char const* path,
                                char const* method, char const* version, char const* data,
                                size_t* size, void** context) {
        HttpServer& server = *static_cast<HttpServer*>(self);
        auto* exchange = static_cast<Exchange*>(*context);
        try {
            if (exchange != nullptr && *size > 0) {
                return exchange->receive(data, std::exchange(*size, 0)) ? MHD_YES : MHD_NO;
            }
            if (exchange == nullptr) {
                Request request = {method, path, {}, textOf(peerOf(connection)), "", ""};
                request.version = version;
                *context = exchange =
                    new Exchange(connection, std::move(request), server.routes_, server.names_);
                return exchange->isLast() ? exchange->send() : MHD_YES;
            }
            if (exchange->isAnswered()) {
                return exchange->send();
            }
            server.submit(connection, *exchange);
            return MHD_YES;
        } catch (...) {
            return MHD_NO;
        }
    }

    static void onEnd(void* self, MHD_Connection* connection, void** exchange,
                      MHD_RequestTerminationCode) {
        delete static_cast<Exchange*>(*exchange);
        *exchange = nullptr;
        limit(self, connection, IDLE_TIME);
    }

  private:
    static in6_addr peerOf(MHD_Connection* connection) {
        return addressOf(
            *MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr);
    }

    static void limit(void* self, MHD_Connection* connection, std::chrono::seconds time) {
        void* const place =
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context;
        static_cast<HttpServer*>(self)->connections_.limit(static_cast<Connection*>(place), time);
    }
};

// The exchange may be answered and deleted before this returns.
void HttpServer::submit(MHD_Connection* connection, Exchange& exchange) {
    std::lock_guard<std::mutex> const guard(mutex_);
    MHD_suspend_connection(connection);
    try {
        if (isStopping_) {
            exchange.answer(true);
        } else {
            asio::post(workers_, [this, &exchange] { exchange.answer(isStopping_); });
        }
    } catch (std::bad_alloc const&) {
        exchange.answer(true);
    }
}

// libmicrohttpd's own limits are not used: its timeout counts only silence, and its limit per client counts whole IPv6
// addresses, on one port.
bool HttpServer::serve(int family, int port, bool onAllInterfaces) {
    bool const isSix = family == AF_INET6;
    bool const isPlain = BEConfig::ENABLE_HTTPS == 0;
    sockaddr_in const four = {AF_INET,
                              htons(static_cast<in_port_t>(port)),
                              {htonl(onAllInterfaces ? INADDR_ANY : INADDR_LOOPBACK)},
                              {}};
    sockaddr_in6 const six = {AF_INET6, four.sin_port, 0,
                              onAllInterfaces ? in6addr_any : in6addr_loopback, 0};
    auto const* const address =
        isSix ? reinterpret_cast<sockaddr const*>(&six) : reinterpret_cast<sockaddr const*>(&four);
    std::string const host =
        isSix ? "[" + textOf(addressOf(*address)) + "]" : textOf(addressOf(*address));
    unsigned int const flags =
        (isPlain ? MHD_NO_FLAG : MHD_USE_TLS) | (isSix ? MHD_USE_IPv6 : MHD_NO_FLAG);
    MHD_Daemon* const daemon = MHD_start_daemon(
        MHD_USE_POLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | flags, 0,          //
        Callbacks::isLetIn, this, Callbacks::onRequest, this,                        //
        MHD_OPTION_SOCK_ADDR, address,                                               //
        MHD_OPTION_CONNECTION_LIMIT, unsigned(MAX_CONNECTIONS + SPARE_CONNECTIONS),  //
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, MAX_HEAD,                                //
        MHD_OPTION_STRICT_FOR_CLIENT, 1,                                             //
        MHD_OPTION_UNESCAPE_CALLBACK, decode, nullptr,                               //
        MHD_OPTION_NOTIFY_CONNECTION, Callbacks::onConnection, this,                 //
        MHD_OPTION_URI_LOG_CALLBACK, Callbacks::onFirstLine, this,                   //
        MHD_OPTION_NOTIFY_COMPLETED, Callbacks::onEnd, this,                         //
        isPlain ? MHD_OPTION_END : MHD_OPTION_HTTPS_MEM_KEY, certificate_.c_str(),   //
        MHD_OPTION_HTTPS_MEM_CERT, certificate_.c_str(),                             //
        MHD_OPTION_HTTPS_PRIORITIES, "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2",   //
        MHD_OPTION_END);
    if (daemon == nullptr) {
        std::fprintf(stderr, "cannot listen on port %d of %s%s\n", port, host.c_str(),
                     isPlain ? "" : ", or no usable certificate and key in ssl_certification_file");
        return false;
    }
    daemons_.push_back(daemon);
    std::printf("listening on %s://%s:%d/\n", isPlain ? "http" : "https", host.c_str(), port);
    return true;
}
