// A small back end on the sample gateway: starts up, reads and changes the configuration, saves it,
// works in a session of its own, and records login attempts until the lock-out.
//
// Run it in a copy of examples/gateway: it changes the files there.
#include <BEConfig.h>
#include <BELoginRecord.h>
#include <CommLabel.h>
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <Logger.h>
#include <TreeMapObject.h>

#include <cstdio>
#include <list>
#include <memory>

namespace {

// A handle on a node belongs to whoever asked for it.
typedef std::unique_ptr<TreeMapObject> Node;

char const DEFAULT_DB[] = "default";

// For a value that may be missing.
char const* shown(char const* value) { return value != nullptr ? value : "(none)"; }

void heading(char const* text) { std::printf("\n== %s\n", text); }

void startUp() {
    heading("Start-up: settings, log, local database");
    BEConfig::init("backend.json");
    Logger::init();
    LocalDbCtrl::init();
    std::printf("data below %s, log in %s, sessions of %d s, secret of %zu characters\n",
                BEConfig::DATA_LOCATION.c_str(), BEConfig::LOG_FILE.c_str(),
                BEConfig::AUTH_EXPIRATION, BEConfig::AUTH_SECRET_STR.size());
    std::printf("message 0 of the gateway type is %s\n", COMM_LABEL(API_GATEWAY, 0));
}

void readValues() {
    heading("Reading values by path: lock, read, unlock");
    TreeMapObject* const network = LocalDbCtrl::lockDbObject(API_NETWORK, "", DEFAULT_DB);
    if (network == nullptr) {
        return;
    }
    for (char const* path : {"lan.ipv4.address", "wan.[0].name", "wan.[0].ipv4.address"}) {
        std::printf("%s = %s\n", path, shown(network->get<char const*>(path)));
    }
    int mtu = 0;
    if (network->get_ex("wan.[0].mtu", mtu)) {
        std::printf("wan.[0].mtu = %d\n", mtu);
    }
    LocalDbCtrl::unlockDbObject(API_NETWORK, DEFAULT_DB);
}

void addRule(TreeMapObject& rules) {
    TreeMapObject rule(false);
    rule.set("id", 7);
    rule.set("name", "garden-camera");
    rule.set("protocol", "tcp");
    rule.set("externalPort", 8555);
    rule.set("internalPort", 554);
    rule.set("internalClient", "192.168.1.40");
    rule.set("enabled", true);
    std::printf("added at index %d\n", rules.addArrayItem(&rule));
}

void disableRule(TreeMapObject& rules, char const* name) {
    for (TreeMapObject* hit : rules.find("name", name)) {
        Node const rule(hit);
        std::printf("disabled %s, port %d\n", name, rule->get<int>("externalPort"));
        rule->set("enabled", false);
    }
}

void refuseSecondWriter() {
    if (LocalDbCtrl::lockDbObject(API_SERVICE, "", DEFAULT_DB) == nullptr) {
        std::printf("a second lock is refused while this one lasts\n");
    }
}

void changeForwarding() {
    heading("Changing the port forwarding: lock, edit, save");
    // The handle lives until here, before the save that ends the document it points into.
    {
        Node const rules(
            LocalDbCtrl::lockDbObject(API_SERVICE, "portForwarding.rules", DEFAULT_DB));
        if (rules == nullptr) {
            // nobody else writes here, so the type is not busy but has no such node, and is locked
            LocalDbCtrl::unlockDbObject(API_SERVICE, DEFAULT_DB);
            return;
        }
        std::printf("locked, %d rules\n", rules->len());
        refuseSecondWriter();
        addRule(*rules);
        std::printf("removed index 4, %d rules left\n", rules->delArrayItem(4));
        disableRule(*rules, "console-online");
    }
    int const result = LocalDbCtrl::saveDbObject(API_SERVICE, DEFAULT_DB);
    std::printf("saved %s: result %d\n", LocalDbCtrl::getFileName(API_SERVICE), result);
}

void workInSession() {
    heading("A session with copies of its own");
    char const key[] = "session-1";
    std::printf("cloned: %d\n", LocalDbCtrl::cloneNewDB(key));
    TreeMapObject* const wifi = LocalDbCtrl::lockDbObject(API_WIFI, "", key);
    if (wifi != nullptr) {
        wifi->set("ssids.[0].name", "only-in-this-session");
        std::printf("session sees %s\n", shown(wifi->get<char const*>("ssids.[0].name")));
        LocalDbCtrl::unlockDbObject(API_WIFI, key);
    }
    TreeMapObject* const shared = LocalDbCtrl::lockDbObject(API_WIFI, "", DEFAULT_DB);
    if (shared != nullptr) {
        std::printf("others see %s\n", shown(shared->get<char const*>("ssids.[0].name")));
        LocalDbCtrl::unlockDbObject(API_WIFI, DEFAULT_DB);
    }
    LocalDbCtrl::removeDB(key);
}

void validateMessage() {
    heading("A message and its schema");
    unsigned int const login = 0;
    TreeMapObject request(API_GATEWAY, login);
    std::printf("%s\n", shown(JsonData::getJson(&request)));
    std::printf("%s: result %d\n", COMM_LABEL(API_GATEWAY, login),
                LocalDbCtrl::validateObject(&request, API_GATEWAY, login));
    request.set("password", 5);
    std::printf("with a number for a password: result %d\n",
                LocalDbCtrl::validateObject(&request, API_GATEWAY, login));
}

void lockOut() {
    heading("Login attempts until the lock-out");
    char const client[] = "192.0.2.17";
    for (int i = 0; i < 12; ++i) {
        BELoginRecord::setAttempt(client);
        LoginAttemptInfo const info = BELoginRecord::getAttempt(client);
        if (info.attempts == 1 || info.lockMinutes > 0) {
            std::printf("attempt %d: wait %u min\n", info.attempts, info.lockMinutes);
        }
    }
    BELoginRecord::eraseAttempt(client);
    std::printf("after a successful login: %d attempts\n",
                BELoginRecord::getAttempt(client).attempts);
}

}  // namespace

int main() {
    startUp();
    readValues();
    changeForwarding();
    workInSession();
    validateMessage();
    lockOut();
    return 0;
}
