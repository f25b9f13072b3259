// Sends a request over a socket, and reads the answer.
#include "LoadClient.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

bool LoadClient::connect() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port_));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socket_ = socket(AF_INET, SOCK_STREAM, 0);
    int const yes = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
    return ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
}

void LoadClient::disconnect() {
    if (socket_ >= 0) {
        close(socket_);
    }
    socket_ = -1;
}

bool LoadClient::send(std::string const& text) {
    return ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(text.size());
}

// Every answer of the back end has a length, or no body.
int LoadClient::receive(std::string& answer) {
    std::string const length = "\r\nContent-Length: ";
    std::string text;
    size_t end = std::string::npos;  // of the headers
    size_t size = 0;
    while (end == std::string::npos || text.size() < end + size) {
        char buffer[16384];
        ssize_t const more = recv(socket_, buffer, sizeof(buffer), 0);
        if (more <= 0) {
            return 0;
        }
        text.append(buffer, static_cast<size_t>(more));
        if (size_t const blank = text.find("\r\n\r\n");
            end == std::string::npos && blank < text.size()) {
            end = blank + 4;
            size_t const place = text.find(length);
            size = place < end ? strtoul(text.c_str() + place + length.size(), nullptr, 10) : 0;
        }
    }
    answer = text.substr(end);
    return atoi(text.c_str() + sizeof("HTTP/1.1"));
}

int LoadClient::ask(char const* method, std::string const& path, std::string const& body,
                    std::string& answer) {
    std::string request = method + (" " + path) + " HTTP/1.1\r\nHost: localhost\r\n";
    if (!token.empty()) {
        request += "Authorization: Bearer " + token + "\r\n";
    }
    if (!body.empty()) {
        request +=
            "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
            "\r\n";
    }
    request += "\r\n" + body;
    int const status = (socket_ >= 0 || connect()) && send(request) ? receive(answer) : 0;
    if (status == 0) {
        disconnect();
    }
    return status;
}
