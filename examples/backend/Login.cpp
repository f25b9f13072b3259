#include "Login.h"

#include <BEConfig.h>
#include <BELoginRecord.h>
#include <LocalDbTransaction.h>
#include <Logger.h>

#include <memory>

#include "Json.h"
#include "Limits.h"
#include "Messages.h"
#include "Password.h"

namespace {

char const REQUEST[] = "GATEWAY_LOGIN_REQ";
char const RESPONSE[] = "GATEWAY_LOGIN_RESP";

struct User {
    bool isKnown = false;  // and may log in
    std::string role;
    std::string password;  // hashed
};

// Names are compared one by one: the search of a document looks everywhere in it.
bool findUser(std::string const& name, User& user) {
    LocalDbTransaction users(API_GATEWAY, "users", "default", MAX_WAIT_MS);
    if (!users) {
        return false;
    }
    for (unsigned int i = 0; i < static_cast<unsigned int>(users->len()); ++i) {
        std::unique_ptr<TreeMapObject> const entry(users->at(i));
        char const* itsName = nullptr;
        char const* role = nullptr;
        char const* password = nullptr;
        bool enabled = false;
        if (entry->get_ex("name", itsName) && name == itsName && entry->get_ex("role", role) &&
            entry->get_ex("password", password) && entry->get_ex("enabled", enabled)) {
            user = {enabled, role, password};
        }
    }
    users.keep();
    return true;
}

Reply welcome(std::string const& token, std::string const& role) {
    TreeMapObject response(false);
    response.set("token", token.c_str());
    response.set("expires", BEConfig::AUTH_EXPIRATION);
    response.set("role", role.c_str());
    if (BEConfig::VALIDATION_ON_RESPONSE != 0 && !isValid(API_GATEWAY, RESPONSE, response.jobj)) {
        return refuse(500, "the answer is no valid GATEWAY_LOGIN_RESP");
    }
    Reply reply;
    reply.body = textOf(response.jobj);
    return reply;
}

}  // namespace

Login::Login(Sessions& sessions) : sessions_(sessions), records_(BELoginRecord::isRunning) {}

Reply Login::attempt(std::string const& address, std::string const& body) {
    Json const value = parseJson(body);
    if (!value || !isValid(API_GATEWAY, REQUEST, value.get())) {
        return refuse(400, "the body is no valid GATEWAY_LOGIN_REQ: a username and a password");
    }
    std::string const name =
        json_object_get_string(json_object_object_get(value.get(), "username"));
    std::string const password =
        json_object_get_string(json_object_object_get(value.get(), "password"));

    std::lock_guard<std::mutex> const guard(oneAtATime_);
    if (unsigned int const minutes = BELoginRecord::getAttempt(address.c_str()).lockMinutes) {
        return refuse(429, "locked out: wait " + std::to_string(minutes) + " min", minutes * 60);
    }
    if (records_ && !BELoginRecord::setAttempt(address.c_str())) {
        return refuse(503, "attempts cannot be recorded: no login");
    }
    User user;
    if (!findUser(name, user)) {
        return refuse(503, "somebody else is writing here", 1);
    }
    if (!passwordMatches(user.password, password) || !user.isKnown) {
        Logger::print(LOG_TYPE_WARN, LOG_GROUP_APIV1_GATEWAY, "login from %s refused\n",
                      address.c_str());
        return refuse(401, "wrong user name or password");
    }
    std::string const token = sessions_.open(name, user.role);
    if (token.empty()) {
        return refuse(503, "too many sessions", 60);
    }
    BELoginRecord::eraseAttempt(address.c_str());
    return welcome(token, user.role);
}
