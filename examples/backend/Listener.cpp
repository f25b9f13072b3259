#include "Listener.h"

#include <BEConfig.h>
#include <Logger.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <new>

#include "Connection.h"
#include "Limits.h"
#include "RequestThreads.h"

namespace {

using Next = httplib::Server::HandlerResponse;

// Of the connection that this thread serves: a request was answered before all of it was read. What
// is left must not be taken for the next one.
thread_local bool isUnread = false;

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

// Those that the routes read; of several of one name the values with commas between.
std::map<std::string, std::string> headersOf(httplib::Request const& request) {
    std::map<std::string, std::string> headers;
    for (char const* const name : {"if-match", "if-none-match"}) {
        for (size_t i = 0; i < request.get_header_value_count(name); ++i) {
            headers[name] += (i == 0 ? "" : ", ") + request.get_header_value(name, i);
        }
    }
    return headers;
}

void send(Reply const& reply, httplib::Response& response) {
    response.status = reply.status;
    if (reply.status != 204 && reply.status != 304) {
        response.set_content(reply.body, reply.type);
    }
    response.set_header("Cache-Control", reply.etag.empty() ? "no-store" : "no-cache, private");
    if (!reply.etag.empty()) {
        response.set_header("ETag", reply.etag);
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
        {"X-Content-Type-Options", "nosniff"},
        {"X-Frame-Options", "DENY"},
        {"Referrer-Policy", "no-referrer"},
        {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
    };
    if (BEConfig::ENABLE_CROSS_DOMAIN != 0) {
        headers.insert({"Access-Control-Allow-Origin", "*"});
        headers.insert({"Access-Control-Allow-Headers",
                        "Authorization, Content-Type, If-Match, If-None-Match"});
        headers.insert({"Access-Control-Expose-Headers", "ETag, Location, Retry-After"});
        headers.insert({"Access-Control-Allow-Methods", "GET, PUT, POST, DELETE"});
    }
    return headers;
}

bool hasBody(httplib::Request const& request) {
    return request.has_header("Content-Length") || request.has_header("Transfer-Encoding");
}

// The body, up to the limit, also of a chunked request, which says no length. False when it is
// longer.
bool readBody(httplib::ContentReader const& read, std::string& body) {
    return read([&](char const* data, size_t size) {
        if (body.size() + size > MAX_BODY) {
            return false;
        }
        body.append(data, size);
        return true;
    });
}

// What is refused before the HTTP library does more with it: its patterns recurse along a path.
Next refuseEarly(httplib::Request const& request, httplib::Response& response) {
    bool const isForm = request.get_header_value("Content-Type").rfind("multipart/", 0) == 0;
    if (request.path.size() <= MAX_URL_PATH && !isForm) {
        return Next::Unhandled;
    }
    isUnread = true;
    send(isForm ? refuse(415, "the body must be JSON") : refuse(414, "the path is too long"),
         response);
    return Next::Handled;
}

void answerException(httplib::Request const&, httplib::Response& response,
                     std::exception_ptr const& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (std::bad_alloc const&) {
        send(refuse(503, "out of memory", 1), response);
    } catch (...) {
        send(refuse(500, "internal error"), response);
    }
}

// Answers by the routes.
class Answerer {
  public:
    explicit Answerer(Routes& routes) : routes_(routes) {}

    void operator()(httplib::Request const& request, httplib::Response& response) const {
        isUnread = hasBody(request);
        reply(request, "", response);
    }

    // Without a length there is no body, and nothing to wait for.
    void operator()(httplib::Request const& request, httplib::Response& response,
                    httplib::ContentReader const& read) const {
        std::string body;
        isUnread = hasBody(request) && !readBody(read, body);
        if (isUnread) {
            send(refuse(413, "the body is incomplete or too long"), response);
        } else {
            reply(request, body, response);
        }
    }

  private:
    void reply(httplib::Request const& request, std::string const& body,
               httplib::Response& response) const {
        Reply const answer = routes_.answer({request.method == "HEAD" ? "GET" : request.method,
                                             request.path, request.params, request.remote_addr,
                                             tokenOf(request), body, headersOf(request)});
        Logger::print(LOG_TYPE_INFO, LOG_GROUP_WSL, "%s %s: %d\n", request.method.c_str(),
                      request.remote_addr.c_str(), answer.status);
        send(answer, response);
    }

    Routes& routes_;
};

}  // namespace

Listener::Listener(Routes& routes, SSL_CTX* tls) : routes_(routes), tls_(tls) {
    limit();
    route();
}

Listener::~Listener() {
    stopping_ = true;
    stop();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void Listener::limit() {
    new_task_queue = [] { return new RequestThreads(REQUEST_THREADS, MAX_WAITING); };
    set_payload_max_length(MAX_BODY);
    set_keep_alive_max_count(MAX_REQUESTS);
    set_tcp_nodelay(true);  // headers and body go out in two pieces
    set_default_headers(commonHeaders());
    set_socket_options(setSocketOptions);
}

void Listener::route() {
    char const everything[] = "[^]*";
    Answerer const answerer(routes_);
    set_pre_routing_handler(refuseEarly);
    Get(everything, httplib::Server::Handler(answerer));
    Post(everything, HandlerWithContentReader(answerer));
    Put(everything, HandlerWithContentReader(answerer));
    Patch(everything, HandlerWithContentReader(answerer));
    Delete(everything, HandlerWithContentReader(answerer));
    Options(everything,
            [](httplib::Request const&, httplib::Response& response) { response.status = 204; });
    set_exception_handler(answerException);
    set_error_handler([](httplib::Request const&, httplib::Response& response) {
        if (response.body.empty()) {
            send(refuse(response.status, "not supported"), response);
        }
    });
}

bool Listener::bind(int family, std::string const& host, int port) {
    set_address_family(family);
    return bind_to_port(host, port);
}

void Listener::start() {
    thread_ = std::thread([this] { listen_after_bind(); });
    while (!is_running()) {
        std::this_thread::yield();
    }
}

bool Listener::process_and_close_socket(int socket) {
    Connection connection(socket, tls_, stopping_);
    for (size_t i = 1; i <= MAX_REQUESTS && connection.awaitRequest(); ++i) {
        bool isClosed = false;
        isUnread = false;
        if (!process_request(connection, i == MAX_REQUESTS, isClosed, nullptr) || isClosed ||
            isUnread) {
            break;
        }
    }
    return true;
}
