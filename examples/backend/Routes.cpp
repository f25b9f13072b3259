// The table of routes, and the way from a request to what answers it.
#include "Routes.h"

#include <BEConfig.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <TreeMapObject.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>

#include "Limits.h"
#include "Resources.h"

namespace {

char const API[] = "/api";

// The session of a request without a token when enable_bypass_token is set.
SessionRef const& anybody() {
    static SessionRef const session =
        std::make_shared<Session const>("anybody", "administrator", "default");
    return session;
}

Reply listTypes(Request const&, Session const&) {
    TreeMapObject types(true);
    for (char const* const folder : API_DATA_DIR) {
        types.addArrayItem(folder != nullptr ? folder : "");
    }
    return replyWith(types);
}

Reply everything(Request const&, Session const& session) { return readEverything(session); }

Reply whoIsThere(Request const&, Session const& session) {
    TreeMapObject me(false);
    me.set("user", session.user.c_str());
    me.set("role", session.role.c_str());
    me.set("mustChangePassword", session.mustChangePassword.load());
    return replyWith(me);
}

// The last lines of the log, whole ones.
Reply logTail(Request const&, Session const& session) {
    if (!session.isAdministrator()) {
        return refuse(403, "only an administrator may read the log");
    }
    std::ifstream log(BEConfig::LOG_FILE, std::ios::binary | std::ios::ate);
    std::streamoff const size = log ? static_cast<std::streamoff>(log.tellg()) : 0;
    std::streamoff const start = std::max<std::streamoff>(0, size - std::streamoff(LOG_TAIL));
    log.seekg(start);
    std::string text((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
    Reply reply;
    reply.type = "text/plain; charset=utf-8";
    reply.body = start == 0 ? text : text.substr(std::min(text.find('\n'), text.size() - 1) + 1);
    return reply;
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

std::string parameter(Request const& request, char const* name) {
    auto const found = request.parameters.find(name);
    return found != request.parameters.end() ? found->second : "";
}

Reply readPlace(Request const& request, Place const& place) {
    std::string const key = parameter(request, "find");
    if (!request.parameters.contains("find")) {
        return readResource(place);
    }
    return !key.empty() && request.parameters.contains("value")
               ? findResources(place, key, parameter(request, "value"))
               : refuse(400, "a search needs find=<key> and value=<value>");
}

Reply answerPlace(Request const& request, Place const& place) {
    typedef Reply (*Change)(Place const& place, std::string const& body);
    static std::map<std::string, Change> const CHANGES = {
        {"PUT", changeResource},
        {"PATCH", mergeResource},
        {"POST", appendResource},
        {"DELETE", [](Place const& there, std::string const&) { return removeResource(there); }},
    };
    auto const change = CHANGES.find(request.method);
    return change != CHANGES.end() ? change->second(place, request.body)
                                   : readPlace(request, place);
}

// /api/<type>/<path> is a place.
Reply answerResource(Request const& request, Session const& session) {
    std::string const rest = request.path.substr(sizeof(API));
    size_t const slash = std::min(rest.find('/'), rest.size());
    unsigned int const type = LocalDbCtrl::getApiType(rest.substr(0, slash).c_str());
    if (type == API_TYPE_COUNT) {
        return refuse(404, "no such API type");
    }
    std::string const path = rest.substr(std::min(slash + 1, rest.size()));
    if (!JsonData::isPath(path.c_str())) {
        return refuse(400,
                      "malformed path: expected names and indexes like [0], separated by dots");
    }
    Conditions const conditions = {request.header("if-match"), request.header("if-none-match")};
    return answerPlace(request, {type, path, session, conditions});
}

// As a function of Routes.
template <Reply (*ANSWER)(Request const&, Session const&)>
Reply withoutRoutes(Routes&, Request const& request, Session const& session) {
    return ANSWER(request, session);
}

}  // namespace

// What a session may ask for, except places in the databases.
struct Routes::Route {
    char const* path;
    char const* method;
    std::function<Reply(Routes&, Request const&, Session const&)> answer;
    bool isForNewPassword = false;  // also before the user has set a password
};

Routes::Route const Routes::ROUTES[] = {
    {"/api", "GET", withoutRoutes<listTypes>},
    {"/api/", "GET", withoutRoutes<listTypes>},
    {"/api/all", "GET", withoutRoutes<everything>},
    {"/api/me", "GET", withoutRoutes<whoIsThere>, true},
    {"/api/me/password", "PUT", &Routes::changePassword, true},
    {"/audit", "GET", &Routes::audit},
    {"/log", "GET", withoutRoutes<logTail>},
    {"/logout", "POST", &Routes::logOut, true},
};

Routes::Routes() : login_(sessions_, audit_), documents_(BEConfig::WEBSERVER_DOCROOT) {}

SessionRef Routes::sessionOf(Request const& request) {
    SessionRef const session = sessions_.find(request.token);
    return session == nullptr && BEConfig::ENABLE_BYPASS_TOKEN != 0 ? anybody() : session;
}

Reply Routes::logOut(Request const& request, Session const&) {
    sessions_.close(request.token);
    return Reply{.status = 204, .headers = {sessionCookie("")}};
}

Reply Routes::changePassword(Request const& request, Session const& session) {
    return login_.changePassword(session, request.address, request.body);
}

Reply Routes::audit(Request const&, Session const& session) {
    return session.isAdministrator() ? audit_.read()
                                     : refuse(403, "only an administrator may read the audit");
}

Reply Routes::answerSession(Request const& request, Session const& session) {
    auto const* const route =
        std::find_if(std::begin(ROUTES), std::end(ROUTES),
                     [&](Route const& one) { return request.path == one.path; });
    if (session.mustChangePassword && (route == std::end(ROUTES) || !route->isForNewPassword)) {
        return refuse(403, "change the password first: PUT /api/me/password");
    }
    if (route == std::end(ROUTES)) {
        Reply reply = answerResource(request, session);
        if (request.method != "GET" && reply.status < 300) {
            audit_.record(session.user, request.address, request.method,
                          request.path.substr(sizeof(API)));
        }
        return reply;
    }
    return request.method == route->method
               ? route->answer(*this, request, session)
               : refuseMethod(std::string(route->method) + ", OPTIONS", "method not allowed");
}

Reply Routes::answer(Request const& request) {
    if (!isPlain(request)) {
        return refuse(
            400, "malformed path: it must begin with a slash and contain no control characters");
    }
    if (request.path == "/login" && request.method == "POST") {
        return login_.attempt(request.address, request.body);
    }
    bool const isFile = !request.path.starts_with(std::string(API) + "/") &&
                        std::none_of(std::begin(ROUTES), std::end(ROUTES),
                                     [&](Route const& one) { return request.path == one.path; });
    if (isFile) {
        return request.method == "GET" ? documents_.get(request.path)
                                       : refuseMethod("GET, HEAD, OPTIONS", "method not allowed");
    }
    SessionRef const session = sessionOf(request);
    return session != nullptr ? answerSession(request, *session) : refuse(401, "log in first");
}
