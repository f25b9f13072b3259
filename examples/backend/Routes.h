// Finds the session of a request, and the function that answers it.
#pragma once

#include <functional>

#include "Login.h"

class Routes {
  public:
    explicit Routes(bool locksOut = true);  // clients that guess passwords

    // Returns the methods that are allowed at a path, separated by commas.
    std::string methodsAt(std::string const& path) const;

    // Answers a request whose method is one of those.
    Reply answer(Request request);

    void closeExpiredSessions() { sessions_.closeExpired(); }

  private:
    // Who may use a route.
    enum Visitor { ANYONE, USER_WITH_ANY_PASSWORD, USER, ADMINISTRATOR };

    struct Route {
        std::string path;  // a star at the end matches anything
        char const* methods;
        Visitor visitor;
        std::function<Reply(Request const& request)> answer;

        bool fits(std::string const& wanted) const;
    };

    Route const& routeOf(std::string const& path) const;
    SessionRef sessionOf(Request const& request, Visitor visitor);

    Sessions sessions_;
    Login login_;
    std::vector<Route> const routes_;  // the first match is used
};
