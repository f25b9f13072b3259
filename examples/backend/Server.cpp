#include "Server.h"

#include <BEConfig.h>
#include <Logger.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <utility>

#include "Limits.h"
#include "RequestThreads.h"

namespace {

size_t const MAX_DISCARDED = 16 * MAX_BODY;  // of a body that is too long, before giving up
time_t const KEEP_ALIVE_SECONDS = 3;
size_t const MAX_REQUESTS = 100;  // over one connection

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

// So that one port can serve both families, each for itself.
void setSocketOptions(int descriptor) {
    int const yes = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &yes, sizeof(yes));
}

std::string tokenOf(httplib::Request const& request) {
    std::string const scheme = "Bearer ";
    std::string const value = request.get_header_value("Authorization");
    return value.rfind(scheme, 0) == 0 ? value.substr(scheme.size()) : "";
}

void send(Reply const& reply, httplib::Response& response) {
    response.status = reply.status;
    if (reply.status != 204) {
        response.set_content(reply.body, reply.type);
    }
    if (reply.retryAfter != 0) {
        response.set_header("Retry-After", std::to_string(reply.retryAfter));
    }
    if (!reply.location.empty()) {
        response.set_header("Location", reply.location);
    }
    if (reply.status == 401) {
        response.set_header("WWW-Authenticate", "Bearer");
    }
}

httplib::Headers commonHeaders() {
    httplib::Headers headers = {
        {"Cache-Control", "no-store"},
        {"X-Content-Type-Options", "nosniff"},
        {"X-Frame-Options", "DENY"},
        {"Referrer-Policy", "no-referrer"},
        {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
    };
    if (BEConfig::ENABLE_CROSS_DOMAIN != 0) {
        headers.insert({"Access-Control-Allow-Origin", "*"});
        headers.insert({"Access-Control-Allow-Headers", "Authorization, Content-Type"});
        headers.insert({"Access-Control-Allow-Methods", "GET, PUT, POST, DELETE"});
    }
    return headers;
}

// The body, up to the limit, also of a chunked request, which says no length. False when it is
// longer.
bool readBody(httplib::Request const& request, httplib::ContentReader const& read,
              std::string& body) {
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding")) {
        return true;  // the reader would wait for a body that does not come
    }
    size_t received = 0;
    bool const isWhole = read([&](char const* data, size_t size) {
        received += size;
        if (received <= MAX_BODY) {
            body.append(data, size);
        }
        return received <= MAX_DISCARDED;
    });
    return isWhole && received <= MAX_BODY;
}

class Listener {
  public:
    explicit Listener(Routes& routes) : routes_(routes) {}

    void operator()(httplib::Request const& request, httplib::Response& response) const {
        reply(request, "", response);
    }

    void operator()(httplib::Request const& request, httplib::Response& response,
                    httplib::ContentReader const& read) const {
        std::string body;
        if (readBody(request, read, body)) {
            reply(request, body, response);
        } else {
            send(refuse(413, "the body is incomplete or too long"), response);
        }
    }

  private:
    void reply(httplib::Request const& request, std::string const& body,
               httplib::Response& response) const {
        Reply const answer =
            routes_.answer({request.method == "HEAD" ? "GET" : request.method, request.path,
                            request.params, request.remote_addr, tokenOf(request), body});
        Logger::print(LOG_TYPE_INFO, LOG_GROUP_WSL, "%s %s: %d\n", request.method.c_str(),
                      request.remote_addr.c_str(), answer.status);
        send(answer, response);
    }

    Routes& routes_;
};

void limit(httplib::Server& server) {
    server.new_task_queue = [] { return new RequestThreads(REQUEST_THREADS, MAX_WAITING); };
    server.set_payload_max_length(MAX_BODY);
    server.set_read_timeout(SOCKET_TIMEOUT);
    server.set_write_timeout(SOCKET_TIMEOUT);
    server.set_tcp_nodelay(true);  // headers and body go out in two pieces
    server.set_keep_alive_timeout(KEEP_ALIVE_SECONDS);
    server.set_keep_alive_max_count(MAX_REQUESTS);
    // Before any pattern is tried: matching recurses along the path.
    server.set_pre_routing_handler(
        [](httplib::Request const& request, httplib::Response& response) {
            if (request.path.size() <= MAX_URL_PATH) {
                return httplib::Server::HandlerResponse::Unhandled;
            }
            send(refuse(414, "the path is too long"), response);
            return httplib::Server::HandlerResponse::Handled;
        });
}

void route(httplib::Server& server, Routes& routes) {
    char const everything[] = "[^]*";
    Listener const listener(routes);
    server.Get(everything, httplib::Server::Handler(listener));
    server.Post(everything, httplib::Server::HandlerWithContentReader(listener));
    server.Put(everything, httplib::Server::HandlerWithContentReader(listener));
    server.Patch(everything, httplib::Server::HandlerWithContentReader(listener));
    server.Delete(everything, httplib::Server::HandlerWithContentReader(listener));
    server.Options(everything, [](httplib::Request const&, httplib::Response& response) {
        response.status = 204;
    });
    server.set_exception_handler(
        [](httplib::Request const&, httplib::Response& response, std::exception_ptr const&) {
            send(refuse(503, "out of memory", 1), response);
        });
    server.set_error_handler([](httplib::Request const&, httplib::Response& response) {
        if (response.body.empty()) {
            send(refuse(response.status, "this is no request that is served here"), response);
        }
    });
}

}  // namespace

Server::Server(Routes& routes, bool onAllInterfaces)
    : routes_(routes), onAllInterfaces_(onAllInterfaces) {}

Server::~Server() {
    for (auto const& listener : listeners_) {
        listener->stop();
    }
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

bool Server::start() {
    for (int const port : portsIn(BEConfig::WEBSERVER_PORTS)) {
        bool const four = contains(portsIn(BEConfig::IPV4_ALLOW_PORTS), port);
        bool const six = contains(portsIn(BEConfig::IPV6_ALLOW_PORTS), port);
        if ((four && !listen(port, AF_INET, onAllInterfaces_ ? "0.0.0.0" : "127.0.0.1")) ||
            (six && !listen(port, AF_INET6, onAllInterfaces_ ? "::" : "::1"))) {
            return false;
        }
    }
    if (listeners_.empty()) {
        std::fprintf(stderr, "no port to listen on: see webserver_ports and ipv4_allow_ports\n");
    }
    return !listeners_.empty();
}

bool Server::listen(int port, int family, std::string const& host) {
    std::string const& certificate = BEConfig::SSL_CERTIFICATION_FILE;
    bool const isSecure = BEConfig::ENABLE_HTTPS != 0;
    std::unique_ptr<httplib::Server> listener =
        isSecure ? std::make_unique<httplib::SSLServer>(certificate.c_str(), certificate.c_str())
                 : std::make_unique<httplib::Server>();
    if (!listener->is_valid()) {
        std::fprintf(stderr, "no certificate and key in %s\n", certificate.c_str());
        return false;
    }
    limit(*listener);
    route(*listener, routes_);
    listener->set_default_headers(commonHeaders());
    listener->set_address_family(family);
    listener->set_socket_options(setSocketOptions);
    if (!listener->bind_to_port(host, port)) {
        std::fprintf(stderr, "cannot listen on port %d of %s\n", port, host.c_str());
        return false;
    }
    std::string const shown = family == AF_INET6 ? "[" + host + "]" : host;
    std::printf("listening on %s://%s:%d/\n", isSecure ? "https" : "http", shown.c_str(), port);
    threads_.emplace_back([server = listener.get()] { server->listen_after_bind(); });
    listeners_.push_back(std::move(listener));
    return true;
}
