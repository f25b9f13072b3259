#include "Routes.h"

#include <BEConfig.h>
#include <LocalDbCtrl.h>
#include <TreeMapObject.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include "Json.h"
#include "Limits.h"
#include "Path.h"
#include "Resources.h"

namespace {

char const API[] = "/api";

// The session of a request without a token when enable_bypass_token is set.
SessionRef const& anybody() {
    static SessionRef const session =
        std::make_shared<Session const>("anybody", "administrator", "default");
    return session;
}

unsigned int typeNamed(std::string const& name) {
    auto const* const found =
        std::find_if(API_DATA_DIR, API_DATA_DIR + API_TYPE_COUNT,
                     [&](char const* folder) { return folder != nullptr && name == folder; });
    return static_cast<unsigned int>(found - API_DATA_DIR);
}

Reply listTypes() {
    TreeMapObject types(true);
    for (char const* const folder : API_DATA_DIR) {
        types.addArrayItem(folder != nullptr ? folder : "");
    }
    Reply reply;
    reply.body = textOf(types.jobj);
    return reply;
}

// The last lines of the log, whole ones.
Reply logTail(Session const& session) {
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

bool isPlain(Request const& request) {
    return request.path.rfind('/', 0) == 0 && isPlainText(request.path) &&
           std::all_of(request.parameters.begin(), request.parameters.end(),
                       [](auto const& parameter) { return isPlainText(parameter.second); });
}

std::string parameter(Request const& request, char const* name) {
    auto const found = request.parameters.find(name);
    return found != request.parameters.end() ? found->second : "";
}

Reply answerPlace(Request const& request, Place const& place) {
    if (request.method == "GET") {
        std::string const key = parameter(request, "find");
        bool const isSearch = request.parameters.contains("find");
        if (isSearch && (key.empty() || !request.parameters.contains("value"))) {
            return refuse(400, "a search needs find=<key> and value=<value>");
        }
        return isSearch ? findResources(place, key, parameter(request, "value"))
                        : readResource(place);
    }
    if (request.method == "PUT") {
        return changeResource(place, request.body);
    }
    if (request.method == "POST") {
        return appendResource(place, request.body);
    }
    if (request.method == "DELETE") {
        return removeResource(place);
    }
    return refuse(405, "method not allowed: use GET, PUT, POST or DELETE");
}

// /api lists the types; /api/<type>/<path> is a place.
Reply answerResource(Request const& request, Session const& session) {
    std::string const rest = request.path.substr(std::min(sizeof(API), request.path.size()));
    if (rest.empty()) {
        return request.method == "GET" ? listTypes() : refuse(405, "method not allowed: use GET");
    }
    size_t const slash = std::min(rest.find('/'), rest.size());
    unsigned int const type = typeNamed(rest.substr(0, slash));
    if (type == API_TYPE_COUNT) {
        return refuse(404, "no such API type");
    }
    std::optional<Path> const path = Path::parse(rest.substr(std::min(slash + 1, rest.size())));
    if (!path) {
        return refuse(400,
                      "malformed path: expected names and indexes like [0], separated by dots");
    }
    Conditions const conditions = {request.header("if-match"), request.header("if-none-match")};
    return answerPlace(request, {type, *path, session, conditions});
}

}  // namespace

Routes::Routes() : login_(sessions_), documents_(BEConfig::WEBSERVER_DOCROOT) {}

SessionRef Routes::sessionOf(Request const& request) {
    SessionRef const session = sessions_.find(request.token);
    return session == nullptr && BEConfig::ENABLE_BYPASS_TOKEN != 0 ? anybody() : session;
}

Reply Routes::answer(Request const& request) {
    if (!isPlain(request)) {
        return refuse(
            400, "malformed path: it must begin with a slash and contain no control characters");
    }
    bool const isPost = request.method == "POST";
    if (request.path == "/login" && isPost) {
        return login_.attempt(request.address, request.body);
    }
    bool const isResource =
        request.path == API || request.path.rfind(std::string(API) + "/", 0) == 0;
    if (!isResource && request.path != "/logout" && request.path != "/log") {
        return request.method == "GET" ? documents_.get(request.path)
                                       : refuse(405, "method not allowed: use GET");
    }
    SessionRef const session = sessionOf(request);
    if (session == nullptr) {
        return refuse(401, "log in first");
    }
    if (isResource) {
        return answerResource(request, *session);
    }
    if (request.path == "/log") {
        return request.method == "GET" ? logTail(*session)
                                       : refuse(405, "method not allowed: use GET");
    }
    if (!isPost) {
        return refuse(405, "method not allowed: use POST");
    }
    sessions_.close(request.token);
    Reply reply;
    reply.status = 204;
    return reply;
}
