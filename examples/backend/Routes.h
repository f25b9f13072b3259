// From a request to its answer: who asks, for what, and which part of the back end answers.
#ifndef BACKEND_ROUTES_H
#define BACKEND_ROUTES_H

#include <map>
#include <string>

#include "Login.h"
#include "Reply.h"
#include "Sessions.h"

struct Request {
    std::string method;
    std::string path;  // decoded
    std::multimap<std::string, std::string> parameters;
    std::string address;  // of the client
    std::string token;    // of the session, or empty
    std::string body;
    std::map<std::string, std::string> headers = {};  // by name in small letters
    std::string version = {};                         // of HTTP

    // "" when there is none
    std::string header(char const* name) const {
        auto const found = headers.find(name);
        return found != headers.end() ? found->second : "";
    }
};

class Routes {
  public:
    // The methods that there may be at a path, separated by commas.
    static std::string methodsAt(std::string const& path);

    // To a request of such a method.
    Reply answer(Request const& request);

  private:
    struct Route;
    static Route const ROUTES[];
    static Route const& routeOf(std::string const& path);

    SessionRef sessionOf(Request const& request, Route const& route);
    void record(Request const& request, Session const& session);

    Sessions sessions_;
    Audit audit_;
    Login login_{sessions_, audit_};
};

#endif
