// Logs users in, and changes their passwords.
#include "Login.h"

#include <BEConfig.h>
#include <LocalDbSnapshot.h>

#include "Audit.h"
#include "Limits.h"
#include "Password.h"
#include "Resources.h"
#include "http/ClientAddress.h"

namespace {

// Returns a string member of the body. Throws 400 if there is none.
std::string textIn(TreeMapObject& body, char const* member) {
    char const* text = nullptr;
    if (!body.get_ex(member, text)) {
        throw refuse(400, std::string("the body needs the string ") + member);
    }
    return text;
}

}  // namespace

struct Login::User {
    bool isEnabled = false;
    bool mustChangePassword = false;
    std::string path;  // in the gateway's database; empty if there is no such user
    std::string role;
    std::string password;  // hashed
};

// Compares the names one by one, because the search of a document would also look inside the entries. An entry that
// lacks a member is skipped.
Login::User Login::findUser(std::string const& name) {
    LocalDbSnapshot const gateway(API_GATEWAY);
    int const count = gateway.len("users");
    require(gateway.status() != LocalDbSnapshot::NO_MEMORY, 503, "out of memory", 1);
    require(count >= 0, 500, "the users cannot be read, or are not an array");
    User user;
    for (int i = 0; i < count; ++i) {
        std::string const entry = "users.[" + std::to_string(i) + "].";
        char const* itsName = nullptr;
        char const* role = nullptr;
        char const* password = nullptr;
        bool enabled = false;
        auto const read = [&](char const* member, auto& value) {
            return gateway.get_ex((entry + member).c_str(), value);
        };
        if (read("name", itsName) && name == itsName && read("role", role) &&
            read("password", password) && read("enabled", enabled)) {
            user = {enabled, false, entry, role, password};
            std::string const mark = entry + "mustChangePassword";  // optional
            user.mustChangePassword =
                gateway.type(mark.c_str()) == json_type_boolean && gateway.get<bool>(mark.c_str());
        }
    }
    return user;
}

Reply Login::logIn(Request const& request) {
    Node const body = parseBody(request.body);
    requireRequest(API_GATEWAY, "GATEWAY_LOGIN_REQ", *body);
    std::string const name = textIn(*body, "username");
    std::lock_guard<std::mutex> const guard(oneAtATime_);
    User const user = verify(request.address, name, textIn(*body, "password"),
                             refuse(401, "wrong user name or password"));
    std::string const token = sessions_.open(name, user.role, user.mustChangePassword);
    require(!token.empty(), 503, "too many sessions", 60);
    audit(name, request.address, "login");
    TreeMapObject response(false);
    response.set("token", token.c_str());
    response.set("expires", BEConfig::AUTH_EXPIRATION);
    response.set("role", user.role.c_str());
    response.set("mustChangePassword", user.mustChangePassword);
    requireResponse(API_GATEWAY, "GATEWAY_LOGIN_RESP", response);
    Reply reply = replyWith(response);
    // for pages, which cannot read it; programs take the token from the body
    reply.headers.push_back(sessionCookie(token));
    return reply;
}

Reply Login::logOut(Request const& request) {
    sessions_.close(request.token);
    return Reply{.status = 204, .headers = {sessionCookie("")}};
}

Reply Login::changePassword(Request const& request) {
    Session const& session = *request.session;
    Node const body = parseBody(request.body);
    std::string const old = textIn(*body, "old");
    std::string const fresh = textIn(*body, "new");
    if (fresh.size() < MIN_PASSWORD || fresh.size() > MAX_PASSWORD || fresh == old) {
        throw refuse(400, "the new password needs " + std::to_string(MIN_PASSWORD) + " to " +
                              std::to_string(MAX_PASSWORD) + " bytes, and must be another one");
    }
    std::lock_guard<std::mutex> const guard(oneAtATime_);
    User const user = verify(request.address, session.user, old, refuse(403, "wrong password"));
    std::string const hash = hashOf(fresh);
    require(!hash.empty(), 503, "the password cannot be hashed", 1);
    changeDatabase(API_GATEWAY, session, [&](LocalDbTransaction& gateway) {
        char const* name = nullptr;
        require(gateway->get_ex((user.path + "name").c_str(), name) && name == session.user, 503,
                "the users have changed meanwhile", 1);
        gateway->set((user.path + "password").c_str(), hash.c_str());
        gateway->remove((user.path + "mustChangePassword").c_str());
    });
    session.mustChangePassword = false;
    sessions_.closeOthers(session);
    audit(session.user, request.address, "password");
    return Reply{.status = 204};
}

Login::User Login::verify(std::string const& address, std::string const& name,
                          std::string const& password, Reply const& refusal) {
    std::string const client = networkOf(address);
    if (unsigned int const minutes = attempts_.lockMinutes(client); minutes != 0) {
        throw refuse(429, "locked out: wait " + std::to_string(minutes) + " min", minutes * 60);
    }
    User user = findUser(name);
    // an unknown name may be a password typed into the wrong field
    std::string const known = user.path.empty() ? "" : name;
    attempts_.count(client, known);
    if (!passwordMatches(user.password, password) || !user.isEnabled) {
        audit(known, address, "login refused");
        if (attempts_.lockMinutes(client) != 0) {
            audit("", client, "locked out");
        }
        throw Reply(refusal);
    }
    attempts_.forgive(client, known);
    return user;
}
