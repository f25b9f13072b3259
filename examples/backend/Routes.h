// From a request to its answer: who asks, for what, and which part of the back end answers.
#pragma once

#include <functional>

#include "Login.h"

class Routes {
  public:
    explicit Routes(bool locksOut = true);  // clients that guess at passwords

    // The methods that there may be at a path, separated by commas.
    std::string methodsAt(std::string const& path) const;

    // To a request of such a method.
    Reply answer(Request request);

    void closeExpiredSessions() { sessions_.closeExpired(); }

  private:
    // Of whom a route answers.
    enum Visitor { ANYONE, USER_WITH_ANY_PASSWORD, USER, ADMINISTRATOR };

    struct Route {
        std::string path;  // with a star at its end also what is below
        char const* methods;
        Visitor visitor;
        std::function<Reply(Request const& request)> answer;

        bool fits(std::string const& wanted) const;
    };

    Route const& routeOf(std::string const& path) const;
    SessionRef sessionOf(Request const& request, Visitor visitor);

    Sessions sessions_;
    Login login_;
    std::vector<Route> const routes_;  // the first that fits counts
};
