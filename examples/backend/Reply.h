// A request once it is no longer HTTP, and what the back end answers to it. What cannot be carried out ends by
// throwing its refusal, which Routes catches.
#pragma once

#include <TreeMapObject.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Sessions.h"

typedef std::unique_ptr<TreeMapObject> Node;

struct Request {
    std::string method;
    std::string path;  // decoded
    std::multimap<std::string, std::string> parameters;
    std::string address;  // of the client
    std::string token;    // of the session, or empty
    std::string body;
    std::map<std::string, std::string> headers = {};  // by name in small letters
    std::string version = {};                         // of HTTP
    SessionRef session = nullptr;                     // of who asks; set by Routes

    // "" when there is none
    std::string header(char const* name) const {
        auto const found = headers.find(name);
        return found != headers.end() ? found->second : "";
    }
};

struct Reply {
    int status = 200;
    std::string body = {};
    std::string etag = {};  // of what may be stored and asked for again; "" for what may not
    std::string type = "application/json";
    std::vector<std::pair<std::string, std::string>> headers = {};  // further ones
};

// Throws std::bad_alloc when there is no memory for the text.
Reply replyWith(TreeMapObject& value, int status = 200);

// {"error": reason}. The client may come back after so many seconds, if that is not 0.
Reply refuse(int status, std::string const& reason, unsigned int retryAfter = 0);

// Throws that refusal unless the condition holds.
void require(bool condition, int status, char const* reason, unsigned int retryAfter = 0);

// 405: where other methods are allowed, which are separated by commas.
Reply refuseMethod(std::string const& allowed);

// The value that a body is. Throws a refusal that says where and why, when it is not exactly one.
Node parseBody(std::string const& body);
