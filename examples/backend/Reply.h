// What the back end answers to a request, before it is HTTP.
#ifndef BACKEND_REPLY_H
#define BACKEND_REPLY_H

#include <string>
#include <utility>
#include <vector>

struct Reply {
    int status = 200;
    std::string body = {};
    std::string type = "application/json";
    unsigned int retryAfter = 0;  // seconds; 0 for no such header
    std::string location = {};    // where what was created can be found, not encoded
    std::string etag = {};        // of what may be stored and asked for again; "" for what may not
    std::vector<std::pair<std::string, std::string>> headers = {};  // further ones
};

// {"error": reason}
Reply refuse(int status, std::string const& reason, unsigned int retryAfter = 0);

// 405: where other methods are allowed, which are separated by commas.
Reply refuseMethod(std::string const& allowed, std::string const& reason);

#endif
