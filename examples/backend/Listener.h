// One port that is listened on: HTTP requests in, answers of the routes out.
#ifndef BACKEND_LISTENER_H
#define BACKEND_LISTENER_H

#include <httplib.h>

#include <atomic>
#include <string>
#include <thread>

#include "Routes.h"

class Listener : public httplib::Server {
  public:
    // Encrypts where there is a TLS context, which outlives it.
    Listener(Routes& routes, SSL_CTX* tls);
    ~Listener() override;
    Listener(Listener const&) = delete;
    Listener& operator=(Listener const&) = delete;

    // False when the port cannot be listened on.
    bool bind(int family, std::string const& host, int port);
    void start();  // returns when it is served

  private:
    void limit();
    void route();
    bool process_and_close_socket(int socket) override;

    Routes& routes_;
    SSL_CTX* const tls_;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

#endif
