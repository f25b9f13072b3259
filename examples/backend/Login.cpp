// Logs users in, and changes their passwords.
#include "Login.h"

#include <BEConfig.h>
#include <LocalDbSnapshot.h>
#include <LocalDbTransaction.h>

#include <cstring>
#include <optional>

#include "Limits.h"
#include "Messages.h"
#include "Password.h"
#include "View.h"
#include "http/ClientAddress.h"

namespace {

char const REQUEST[] = "GATEWAY_LOGIN_REQ";
char const RESPONSE[] = "GATEWAY_LOGIN_RESP";

// Why the users cannot be searched, if they cannot. Names are compared one by one: the search of a document
// looks everywhere in it. An entry that lacks something is nobody's.
std::optional<Reply> findUser(std::string const& name, Login::User& user) {
    LocalDbSnapshot const gateway(API_GATEWAY);
    if (gateway.status() == LocalDbSnapshot::NO_MEMORY) {
        return refuse(503, "out of memory", 1);
    }
    int const count = gateway.len("users");
    if (count < 0) {
        return refuse(500, "the users cannot be read, or are not an array");
    }
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
            user = {true, enabled, false, entry, role, password};
            read("mustChangePassword", user.mustChangePassword);
        }
    }
    return std::nullopt;
}

// A page has the token as a cookie that it cannot read; a program takes it from the body.
Reply welcome(std::string const& token, Login::User const& user) {
    TreeMapObject response(false);
    response.set("token", token.c_str());
    response.set("expires", BEConfig::AUTH_EXPIRATION);
    response.set("role", user.role.c_str());
    response.set("mustChangePassword", user.mustChangePassword);
    if (BEConfig::VALIDATION_ON_RESPONSE != 0 && !isValid(API_GATEWAY, RESPONSE, response)) {
        return refuse(500, "internal error: response does not match GATEWAY_LOGIN_RESP");
    }
    Reply reply = replyWith(response);
    reply.headers.push_back(sessionCookie(token));
    return reply;
}

// Stores the hash of a new password; why that is not possible, if so.
std::optional<Reply> store(std::string const& hash, Session const& session,
                           Login::User const& user) {
    LocalDbTransaction gateway(API_GATEWAY, "", "default", MAX_WAIT_MS);
    if (!gateway) {
        return refuseDatabase(gateway.status());
    }
    char const* name = nullptr;
    if (!gateway->get_ex((user.path + "name").c_str(), name) || name != session.user) {
        return refuse(503, "the users have changed meanwhile", 1);
    }
    gateway->set((user.path + "password").c_str(), hash.c_str());
    gateway->remove((user.path + "mustChangePassword").c_str());
    if (gateway.save() != 0) {
        return gateway.status() == LocalDbTransaction::INVALID
                   ? refuseDocument(API_GATEWAY, gateway.fault())
                   : refuse(500, "the password could not be saved; nothing is changed");
    }
    session.seeSaved(API_GATEWAY);
    return std::nullopt;
}

}  // namespace

Reply Login::attempt(std::string const& address, std::string const& body) {
    Reply refusal;
    Node const request = parseBody(body, refusal);
    if (request == nullptr) {
        return refusal;
    }
    if (std::optional<Reply> const invalid = refuseMessage(API_GATEWAY, REQUEST, *request)) {
        return *invalid;
    }
    char const* name = nullptr;
    char const* password = nullptr;
    if (!request->get_ex("username", name) || !request->get_ex("password", password)) {
        return refuse(400, "a login needs a username and a password");
    }
    User user;
    if (std::optional<Reply> const refused = verify(address, name, password, user)) {
        return *refused;
    }
    std::string const token = sessions_.open(name, user.role, user.mustChangePassword);
    if (token.empty()) {
        return refuse(503, "too many sessions", 60);
    }
    audit_.record(name, address, "login", "");
    return welcome(token, user);
}

Reply Login::changePassword(Session const& session, std::string const& address,
                            std::string const& body) {
    Reply refusal;
    Node const request = parseBody(body, refusal);
    if (request == nullptr) {
        return refusal;
    }
    char const* old = nullptr;
    char const* fresh = nullptr;
    if (!request->get_ex("old", old) || !request->get_ex("new", fresh)) {
        return refuse(400, "a change needs the old and the new password");
    }
    std::size_t const length = std::strlen(fresh);
    if (length < MIN_PASSWORD || length > MAX_PASSWORD || std::strcmp(old, fresh) == 0) {
        return refuse(400, "the new password needs " + std::to_string(MIN_PASSWORD) + " to " +
                               std::to_string(MAX_PASSWORD) + " bytes, and must be another one");
    }
    User user;
    if (std::optional<Reply> const refused = verify(address, session.user, old, user)) {
        return refused->status == 401 ? refuse(403, "wrong password") : *refused;
    }
    std::string const hash = hashOf(fresh);
    if (hash.empty()) {
        return refuse(503, "the password cannot be hashed", 1);
    }
    if (std::optional<Reply> const refused = store(hash, session, user)) {
        return *refused;
    }
    session.mustChangePassword = false;
    sessions_.closeOthers(session);
    audit_.record(session.user, address, "password", "");
    return Reply{.status = 204};
}

std::optional<Reply> Login::verify(std::string const& address, std::string const& name,
                                   std::string const& password, User& user) {
    std::string const client = networkOf(address);
    std::lock_guard<std::mutex> const guard(oneAtATime_);
    if (unsigned int const minutes = attempts_.lockMinutes(client)) {
        return refuse(429, "locked out: wait " + std::to_string(minutes) + " min", minutes * 60);
    }
    if (std::optional<Reply> const refusal = findUser(name, user)) {
        return *refusal;
    }
    std::string const known = user.isKnown ? name : "";  // what is not a name may be a password
    attempts_.count(client, known);
    if (!passwordMatches(user.password, password) || !user.isEnabled) {
        audit_.record(known, address, "login refused", "");
        return refuse(401, "wrong user name or password");
    }
    attempts_.forgive(client, known);
    return std::nullopt;
}
