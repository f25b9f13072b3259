// Holds the table of routes, and answers requests by it.
#include "Routes.h"

#include <BEConfig.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <iterator>

#include "Audit.h"
#include "DocumentRoot.h"
#include "Limits.h"
#include "Resources.h"

namespace {

char const API[] = "/api/";

Reply listTypes(Request const&) {
    TreeMapObject types(true);
    for (char const* const folder : API_DATA_DIR) {
        types.addArrayItem(folder != nullptr ? folder : "");
    }
    return replyWith(types);
}

Reply describe(Request const& request) {
    Session const& session = *request.session;
    TreeMapObject me(false);
    me.set("user", session.user.c_str());
    me.set("role", session.role.c_str());
    me.set("mustChangePassword", session.mustChangePassword.load());
    return replyWith(me);
}

// Answers with the last complete lines of the log.
Reply logTail(Request const&) {
    std::ifstream log(BEConfig::LOG_FILE, std::ios::binary | std::ios::ate);
    std::streamoff const size = log ? static_cast<std::streamoff>(log.tellg()) : 0;
    std::streamoff const start = std::max<std::streamoff>(0, size - std::streamoff(LOG_TAIL));
    log.seekg(start);
    std::string text((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
    text.erase(0, start == 0 ? 0 : text.find('\n') + 1);
    return {.body = text, .type = "text/plain; charset=utf-8"};
}

bool isPlain(Request const& request) {
    std::string text = request.path;
    for (auto const& [name, value] : request.parameters) {
        text += value;
    }
    return request.path.starts_with('/') && std::ranges::none_of(text, [](char c) {
               return std::iscntrl(static_cast<unsigned char>(c)) != 0;
           });
}

// /api/<type>/<path>
Place placeOf(Request const& request) {
    std::string const rest = request.path.substr(std::strlen(API));
    size_t const slash = std::min(rest.find('/'), rest.size());
    unsigned int const type = LocalDbCtrl::getApiType(rest.substr(0, slash).c_str());
    require(type != API_TYPE_COUNT, 404, "no such API type");
    std::string const path = rest.substr(std::min(slash + 1, rest.size()));
    require(JsonData::isPath(path.c_str()), 400,
            "malformed path: names and indexes like [0], separated by dots");
    Conditions const conditions = {request.header("if-match"), request.header("if-none-match")};
    return {type, path, *request.session, conditions};
}

Reply answerAt(Request const& request) {
    Place const place = placeOf(request);
    if (request.method != "GET") {
        return changeResource(place, request.method, request.body);
    }
    auto const key = request.parameters.find("find");
    auto const value = request.parameters.find("value");
    if (key == request.parameters.end()) {
        return readResource(place);
    }
    require(!key->second.empty() && value != request.parameters.end(), 400,
            "a search needs find=<key> and value=<value>");
    return findResources(place, key->second, value->second);
}

}  // namespace

bool Routes::Route::fits(std::string const& wanted) const {
    return path.ends_with('*') ? wanted.starts_with(path.substr(0, path.size() - 1))
                               : wanted == path;
}

Routes::Routes(bool locksOut)
    : login_(sessions_, locksOut),
      routes_{
          {"/login", "POST", ANYONE, std::bind_front(&Login::logIn, &login_)},
          {"/logout", "POST", USER_WITH_ANY_PASSWORD, std::bind_front(&Login::logOut, &login_)},
          {"/api/me", "GET, HEAD", USER_WITH_ANY_PASSWORD, describe},
          {"/api/me/password", "PUT", USER_WITH_ANY_PASSWORD,
           std::bind_front(&Login::changePassword, &login_)},
          {"/api/all", "GET, HEAD", USER, readEverything},
          {"/api", "GET, HEAD", USER, listTypes},
          {"/api/", "GET, HEAD", USER, listTypes},
          {"/api/guest", "POST", USER, switchGuestNetwork},
          {"/api/*", "GET, HEAD, PUT, PATCH, POST, DELETE", USER, answerAt},
          {"/audit", "GET, HEAD", ADMINISTRATOR, readAudit},
          {"/log", "GET, HEAD", ADMINISTRATOR, logTail},
          {"*", "GET, HEAD", ANYONE, readPage},
      } {}

Routes::Route const& Routes::routeOf(std::string const& path) const {
    return *std::ranges::find_if(routes_, [&](Route const& route) { return route.fits(path); });
}

std::string Routes::methodsAt(std::string const& path) const {
    return routeOf(path).methods + std::string(", OPTIONS");
}

SessionRef Routes::sessionOf(Request const& request, Visitor visitor) {
    static SessionRef const anybody =
        std::make_shared<Session const>("anybody", "administrator", "default");
    SessionRef session = visitor == ANYONE ? anybody : sessions_.find(request.token);
    if (session == nullptr && BEConfig::ENABLE_BYPASS_TOKEN != 0) {
        session = anybody;
    }
    require(session != nullptr, 401, "log in first");
    require(!session->mustChangePassword || visitor <= USER_WITH_ANY_PASSWORD, 403,
            "change the password first: PUT /api/me/password");
    require(session->isAdministrator() || visitor != ADMINISTRATOR, 403,
            "only an administrator may read this");
    return session;
}

Reply Routes::answer(Request request) {
    try {
        require(isPlain(request), 400,
                "malformed path: it must begin with a slash and contain no control characters");
        Route const& route = routeOf(request.path);
        request.session = sessionOf(request, route.visitor);
        Reply reply = route.answer(request);
        if (route.visitor == USER && request.method != "GET") {
            audit(request.session->user, request.address, request.method,
                  request.path.c_str() + std::strlen(API));
        }
        return reply;
    } catch (Reply const& refusal) {
        return refusal;
    }
}
