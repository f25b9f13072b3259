// A request and its reply, independent of HTTP. A function that cannot carry out a request throws the refusal as a Reply,
// which Routes catches.
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
    std::string token;    // of the session; may be empty
    std::string body;
    std::map<std::string, std::string> headers = {};  // by lower-case name
    std::string version = {};                         // of HTTP
    SessionRef session = nullptr;                     // set by Routes

    // Returns "" if there is no such header.
    std::string header(char const* name) const {
        auto const found = headers.find(name);
        return found != headers.end() ? found->second : "";
    }
};

struct Reply {
    int status = 200;
    std::string body = {};
    std::string etag = {};  // "" if the client must not store the body
    std::string type = "application/json";
    std::vector<std::pair<std::string, std::string>> headers = {};  // besides the usual ones
};

// Throws std::bad_alloc.
Reply replyWith(TreeMapObject& value, int status = 200);

// Returns {"error": reason}. `retryAfter` is in seconds; 0 leaves the header out.
Reply refuse(int status, std::string const& reason, unsigned int retryAfter = 0);

// Throws that refusal unless the condition holds.
void require(bool condition, int status, char const* reason, unsigned int retryAfter = 0);

// Returns a 405. `allowed` lists the methods that are allowed, separated by commas.
Reply refuseMethod(std::string const& allowed);

// Returns the body's value. If the body is not exactly one JSON value, throws a 400 that says where and why.
Node parseBody(std::string const& body);
