// What the back end answers to a request, before it is HTTP, and the reading of what a client sends.
#ifndef BACKEND_REPLY_H
#define BACKEND_REPLY_H

#include <TreeMapObject.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

typedef std::unique_ptr<TreeMapObject> Node;

struct Reply {
    int status = 200;
    std::string body = {};
    std::string type = "application/json";
    unsigned int retryAfter = 0;  // seconds; 0 for no such header
    std::string location = {};    // where what was created can be found, not encoded
    std::string etag = {};        // of what may be stored and asked for again; "" for what may not
    std::vector<std::pair<std::string, std::string>> headers = {};  // further ones
};

// Throws std::bad_alloc when there is no memory for the text.
Reply replyWith(TreeMapObject& value, int status = 200);

// {"error": reason}
Reply refuse(int status, std::string const& reason, unsigned int retryAfter = 0);

// 405: where other methods are allowed, which are separated by commas.
Reply refuseMethod(std::string const& allowed, std::string const& reason);

// The value that a body is; null when it is not exactly one, and then `refusal` says where and why.
Node parseBody(std::string const& body, Reply& refusal);

#endif
