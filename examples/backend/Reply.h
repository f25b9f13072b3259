// What the back end answers to a request, before it is HTTP.
#ifndef BACKEND_REPLY_H
#define BACKEND_REPLY_H

#include <string>

struct Reply {
    int status = 200;
    std::string body = {};
    std::string type = "application/json";
    unsigned int retryAfter = 0;  // seconds; 0 for no such header
    std::string location = {};    // where what was created can be found
    std::string etag = {};        // of what may be stored and asked for again; "" for what may not
};

// {"error": reason}
Reply refuse(int status, std::string const& reason, unsigned int retryAfter = 0);

#endif
