// Asks a back end on the loopback interface, over one connection that stays open.
#pragma once

#include <string>

class LoadClient {
  public:
    explicit LoadClient(int port) : port_(port) {}
    ~LoadClient() { disconnect(); }
    LoadClient(LoadClient const&) = delete;
    LoadClient& operator=(LoadClient const&) = delete;

    // The status, and the body in `answer`; 0 when none came.
    int ask(char const* method, std::string const& path, std::string const& body,
            std::string& answer);

    std::string token;  // of the session, once there is one

  private:
    bool connect();
    void disconnect();
    bool send(std::string const& text);
    int receive(std::string& answer);

    int const port_;
    int socket_ = -1;
};
