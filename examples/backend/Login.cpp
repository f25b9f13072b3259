#include "Login.h"

#include <BEConfig.h>
#include <BELoginRecord.h>
#include <LocalDbSnapshot.h>
#include <Logger.h>

#include <optional>

#include "Json.h"
#include "Messages.h"
#include "Password.h"
#include "http/ClientAddress.h"

namespace {

char const REQUEST[] = "GATEWAY_LOGIN_REQ";
char const RESPONSE[] = "GATEWAY_LOGIN_RESP";

struct User {
    bool isKnown = false;
    bool isEnabled = false;
    std::string role;
    std::string password;  // hashed
};

// Why the users cannot be searched, if they cannot. Names are compared one by one: the search of a document
// looks everywhere in it. An entry that lacks something is nobody's.
std::optional<Reply> findUser(std::string const& name, User& user) {
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
    if (BEConfig::VALIDATION_ON_RESPONSE != 0 && !isValid(API_GATEWAY, RESPONSE, response.jobj)) {
        return refuse(500, "internal error: response does not match GATEWAY_LOGIN_RESP");
    }
    Reply reply;
    reply.body = textOf(response.jobj);
    return reply;
}

}  // namespace

Login::Login(Sessions& sessions) : sessions_(sessions), records_(BELoginRecord::isRunning) {}

Reply Login::attempt(std::string const& address, std::string const& body) {
    Json const value = parseJson(body);
    if (!value) {
        return refuse(400, "the body is not one JSON value");
    }
    if (std::optional<Reply> const refusal = refuseMessage(API_GATEWAY, REQUEST, value.get())) {
        return *refusal;
    }
    char const* const username = stringAt(value.get(), "username");
    char const* const password = stringAt(value.get(), "password");
    if (username == nullptr || password == nullptr) {
        return refuse(400, "a login needs a username and a password");
    }
    std::string const name = username;

    std::string const client = networkOf(address);
    std::lock_guard<std::mutex> const guard(oneAtATime_);
    if (unsigned int const minutes = BELoginRecord::getAttempt(client.c_str()).lockMinutes) {
        return refuse(429, "locked out: wait " + std::to_string(minutes) + " min", minutes * 60);
    }
    if (records_ && !BELoginRecord::setAttempt(client.c_str())) {
        return refuse(503, "the login attempt cannot be recorded");
    }
    User user;
    if (std::optional<Reply> const refusal = findUser(name, user)) {
        return *refusal;
    }
    if (!passwordMatches(user.password, password) || !user.isEnabled) {
        ++failures_[client][user.isKnown ? name : ""];
        Logger::print(LOG_TYPE_WARN, LOG_GROUP_APIV1_GATEWAY, "login from %s refused\n",
                      address.c_str());
        return refuse(401, "wrong user name or password");
    }
    forgive(client, name);
    std::string const token = sessions_.open(name, user.role);
    return token.empty() ? refuse(503, "too many sessions", 60) : welcome(token, user.role);
}

// Otherwise whoever has an account could guess at another one for ever, and log in between.
void Login::forgive(std::string const& client, std::string const& name) {
    Failures& failures = failures_[client];
    failures.erase(name);
    BELoginRecord::eraseAttempt(client.c_str());
    for (auto const& [user, count] : failures) {
        for (unsigned int i = 0; i < count; ++i) {
            BELoginRecord::setAttempt(client.c_str());
        }
    }
    if (failures.empty()) {
        failures_.erase(client);
    }
}
