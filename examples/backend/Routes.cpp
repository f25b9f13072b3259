// The table of routes, and the way from a request to what answers it.
#include "Routes.h"

#include <BEConfig.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <iterator>

#include "DocumentRoot.h"
#include "Limits.h"
#include "Resources.h"

namespace {

char const API[] = "/api/";

Reply listTypes(Routes&, Request const&, Session const&) {
    TreeMapObject types(true);
    for (char const* const folder : API_DATA_DIR) {
        types.addArrayItem(folder != nullptr ? folder : "");
    }
    return replyWith(types);
}

Reply describe(Session const& session) {
    TreeMapObject me(false);
    me.set("user", session.user.c_str());
    me.set("role", session.role.c_str());
    me.set("mustChangePassword", session.mustChangePassword.load());
    return replyWith(me);
}

// The last lines of the log, whole ones.
Reply logTail(Routes&, Request const&, Session const&) {
    std::ifstream log(BEConfig::LOG_FILE, std::ios::binary | std::ios::ate);
    std::streamoff const size = log ? static_cast<std::streamoff>(log.tellg()) : 0;
    std::streamoff const start = std::max<std::streamoff>(0, size - std::streamoff(LOG_TAIL));
    log.seekg(start);
    std::string text((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
    text.erase(0, start == 0 ? 0 : text.find('\n') + 1);
    return {.body = text, .type = "text/plain; charset=utf-8"};
}

bool isPlainText(std::string const& text) {
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return std::iscntrl(static_cast<unsigned char>(c)) != 0; });
}

bool isPlain(Request const& request) {
    return request.path.starts_with('/') && isPlainText(request.path) &&
           std::all_of(request.parameters.begin(), request.parameters.end(),
                       [](auto const& parameter) { return isPlainText(parameter.second); });
}

// /api/<type>/<path>
Place placeOf(Request const& request, Session const& session) {
    std::string const rest = request.path.substr(std::strlen(API));
    size_t const slash = std::min(rest.find('/'), rest.size());
    unsigned int const type = LocalDbCtrl::getApiType(rest.substr(0, slash).c_str());
    require(type != API_TYPE_COUNT, 404, "no such API type");
    std::string const path = rest.substr(std::min(slash + 1, rest.size()));
    require(JsonData::isPath(path.c_str()), 400,
            "malformed path: names and indexes like [0], separated by dots");
    return {type, path, session, {request.header("if-match"), request.header("if-none-match")}};
}

Reply readPlace(Request const& request, Place const& place) {
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

struct Routes::Route {
    // Of whom it answers.
    enum Visitor { ANYONE, USER_WITH_ANY_PASSWORD, USER, ADMINISTRATOR };

    char const* path;  // with a star at its end also what is below
    char const* methods;
    Visitor visitor;
    Reply (*answer)(Routes& routes, Request const& request, Session const& session);

    bool fits(std::string const& wanted) const {
        std::string const own = path;
        return own.ends_with('*') ? wanted.starts_with(own.substr(0, own.size() - 1))
                                  : wanted == own;
    }
};

// The first that fits counts.
Routes::Route const Routes::ROUTES[] = {
    {"/login", "POST", Route::ANYONE,
     [](Routes& routes, Request const& request, Session const&) {
         return routes.login_.attempt(request.address, request.body);
     }},
    {"/logout", "POST", Route::USER_WITH_ANY_PASSWORD,
     [](Routes& routes, Request const& request, Session const&) {
         routes.sessions_.close(request.token);
         return Reply{.status = 204, .headers = {sessionCookie("")}};
     }},
    {"/api/me", "GET, HEAD", Route::USER_WITH_ANY_PASSWORD,
     [](Routes&, Request const&, Session const& session) { return describe(session); }},
    {"/api/me/password", "PUT", Route::USER_WITH_ANY_PASSWORD,
     [](Routes& routes, Request const& request, Session const& session) {
         return routes.login_.changePassword(session, request.address, request.body);
     }},
    {"/api/all", "GET, HEAD", Route::USER,
     [](Routes&, Request const&, Session const& session) { return readEverything(session); }},
    {"/api", "GET, HEAD", Route::USER, listTypes},
    {"/api/", "GET, HEAD", Route::USER, listTypes},
    {"/api/guest", "POST", Route::USER,
     [](Routes& routes, Request const& request, Session const& session) {
         Reply reply = switchGuestNetwork(session, request.body);
         routes.record(request, session);
         return reply;
     }},
    {"/api/*", "GET, HEAD, PUT, PATCH, POST, DELETE", Route::USER,
     [](Routes& routes, Request const& request, Session const& session) {
         Place const place = placeOf(request, session);
         if (request.method == "GET") {
             return readPlace(request, place);
         }
         Reply reply = changeResource(place, request.method, request.body);
         routes.record(request, session);
         return reply;
     }},
    {"/audit", "GET, HEAD", Route::ADMINISTRATOR,
     [](Routes& routes, Request const&, Session const&) { return routes.audit_.read(); }},
    {"/log", "GET, HEAD", Route::ADMINISTRATOR, logTail},
    {"*", "GET, HEAD", Route::ANYONE,
     [](Routes&, Request const& request, Session const&) { return readPage(request.path); }},
};

Routes::Route const& Routes::routeOf(std::string const& path) {
    return *std::find_if(std::begin(ROUTES), std::end(ROUTES),
                         [&](Route const& route) { return route.fits(path); });
}

std::string Routes::methodsAt(std::string const& path) {
    return routeOf(path).methods + std::string(", OPTIONS");
}

SessionRef Routes::sessionOf(Request const& request, Route const& route) {
    static SessionRef const anybody =
        std::make_shared<Session const>("anybody", "administrator", "default");
    if (route.visitor == Route::ANYONE) {
        return anybody;
    }
    SessionRef const known = sessions_.find(request.token);
    SessionRef session = known == nullptr && BEConfig::ENABLE_BYPASS_TOKEN != 0 ? anybody : known;
    require(session != nullptr, 401, "log in first");
    require(!session->mustChangePassword || route.visitor <= Route::USER_WITH_ANY_PASSWORD, 403,
            "change the password first: PUT /api/me/password");
    require(session->isAdministrator() || route.visitor != Route::ADMINISTRATOR, 403,
            "only an administrator may read this");
    return session;
}

// A line of audit for a change that was made.
void Routes::record(Request const& request, Session const& session) {
    audit_.record(session.user, request.address, request.method,
                  request.path.substr(std::strlen(API)));
}

Reply Routes::answer(Request const& request) {
    try {
        require(isPlain(request), 400,
                "malformed path: it must begin with a slash and contain no control characters");
        Route const& route = routeOf(request.path);
        SessionRef const session = sessionOf(request, route);
        return route.answer(*this, request, *session);
    } catch (Reply const& refusal) {
        return refusal;
    }
}
