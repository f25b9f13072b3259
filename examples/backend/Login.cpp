#include "Login.h"

#include <BEConfig.h>
#include <BELoginRecord.h>
#include <LocalDbSnapshot.h>
#include <Logger.h>

#include <optional>

#include "Limits.h"
#include "Messages.h"
#include "Password.h"
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
            user = {true, enabled, role, password};
        }
    }
    return std::nullopt;
}

Reply welcome(std::string const& token, std::string const& role) {
    TreeMapObject response(false);
    response.set("token", token.c_str());
    response.set("expires", BEConfig::AUTH_EXPIRATION);
    response.set("role", role.c_str());
    if (BEConfig::VALIDATION_ON_RESPONSE != 0 && !isValid(API_GATEWAY, RESPONSE, response)) {
        return refuse(500, "internal error: response does not match GATEWAY_LOGIN_RESP");
    }
    return replyWith(response);
}

}  // namespace

Login::Login(Sessions& sessions) : sessions_(sessions), records_(BELoginRecord::isRunning) {
    BELoginRecord::setMaximum(MAX_CLIENTS);
}

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
    std::string const token = sessions_.open(name, user.role);
    return token.empty() ? refuse(503, "too many sessions", 60) : welcome(token, user.role);
}

std::optional<Reply> Login::verify(std::string const& address, std::string const& name,
                                   std::string const& password, User& user) {
    std::string const client = networkOf(address);
    std::lock_guard<std::mutex> const guard(oneAtATime_);
    if (unsigned int const minutes = BELoginRecord::getAttempt(client.c_str()).lockMinutes) {
        return refuse(429, "locked out: wait " + std::to_string(minutes) + " min", minutes * 60);
    }
    if (std::optional<Reply> const refusal = findUser(name, user)) {
        return *refusal;
    }
    std::string const subject = user.isKnown ? name : "";
    if (records_ && !BELoginRecord::setAttemptAt(client.c_str(), subject.c_str())) {
        return refuse(503, "the login attempt cannot be recorded");
    }
    if (!passwordMatches(user.password, password) || !user.isEnabled) {
        Logger::print(LOG_TYPE_WARN, LOG_GROUP_APIV1_GATEWAY, "login from %s refused\n",
                      address.c_str());
        return refuse(401, "wrong user name or password");
    }
    BELoginRecord::eraseAttemptAt(client.c_str(), subject.c_str());
    return std::nullopt;
}
