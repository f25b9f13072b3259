// The settings: their defaults, and the configuration file laid over them. golden/settings.txt has
// the values that a key may have, and the unusable files.
#include "BEConfig.h"

#include <variant>

#include "session/Session.h"

namespace {

typedef std::variant<std::string*, int*>
    Destination;  // its type is the type that the file must have

// One row for each setting, in the order in which the file is read. A key with a colon is not in
// the file.
struct Setting {
    std::string key;  // in the file; dots lead into objects
    Destination destination;
    std::string fallback;
} const SETTINGS[] = {
    {"webserver_ports", &BEConfig::WEBSERVER_PORTS, "8081,8082"},
    {"ipv4_allow_ports", &BEConfig::IPV4_ALLOW_PORTS, "8081,8082"},
    {"ipv6_allow_ports", &BEConfig::IPV6_ALLOW_PORTS, "8081"},
    {"lan_allow_ports", &BEConfig::LAN_ALLOW_PORTS, "8081,8082"},
    {"wan_allow_ports", &BEConfig::WAN_ALLOW_PORTS, "8081"},
    {"wlan_allow_ports", &BEConfig::WLAN_ALLOW_PORTS, ""},
    {"data_location", &BEConfig::DATA_LOCATION, "./data"},
    {"webserver_docroot", &BEConfig::WEBSERVER_DOCROOT, "www/vobi"},
    {"url_rewrite_path", &BEConfig::URL_REWRITE, "url_rewrite.txt"},
    {"download_storage", &BEConfig::DOWNLOAD_STORAGE, "/tmp/be_download"},
    {"upload_storage", &BEConfig::UPLOAD_STORAGE, "/tmp/be_upload"},
    {"ssl_certification_file", &BEConfig::SSL_CERTIFICATION_FILE, "./ssl_cert.pem"},
    {"duplicate_login_enable", &BEConfig::DUPLICATE_LOGIN_ENABLE, ""},
    {"log_file", &BEConfig::LOG_FILE, "./BE.log"},
    {"enable_https", &BEConfig::ENABLE_HTTPS, "0"},
    {"repo_type", &BEConfig::REPO_TYPE, "1"},
    {"api_version", &BEConfig::API_VERSION, "0"},
    {"enable_multidb_mode", &BEConfig::MULTIDB_MODE_ENABLE, "0"},
    {"log_to_file", &BEConfig::LOG_TO_FILE, "1"},
    {"log_debug_enable", &BEConfig::LOG_DEBUG_ENABLE, "1"},
    {"log_warning_enable", &BEConfig::LOG_WARNING_ENABLE, "1"},
    {"log_info_enable", &BEConfig::LOG_INFO_ENABLE, "1"},
    {"log_error_enable", &BEConfig::LOG_ERROR_ENABLE, "1"},
    {"log_mask", &BEConfig::LOG_MASK, "268435455"},
    {"validation_on_response", &BEConfig::VALIDATION_ON_RESPONSE, "1"},
    {"enable_bruteforce_prevent", static_cast<int*>(nullptr), "0"},  // starts the login record
    {"enable_cross_domain", &BEConfig::ENABLE_CROSS_DOMAIN, "0"},
    {"enable_bypass_token", &BEConfig::ENABLE_BYPASS_TOKEN, "0"},
    {"system.cleanup_time", &BEConfig::AUTH_CLEANUP, "60"},
    {"system.domain_name", &BEConfig::AUTH_SECRET_STR, "u8jzPde0IgxLd6GncfBAepfJBd0Kh"},
    {"system.timer.session", &BEConfig::AUTH_EXPIRATION, "1440"},
    {"no key: script directory", &BEConfig::SYSTEM_SCRIPT_DIR, "scripts"},
    {"no key: port", &BEConfig::WEBSERVER_PORT, "8888"},
    {"no key: guest network", &BEConfig::GUEST_NETWORK_ENABLE, "0"},
};

std::string valueOf(Setting const& setting) {
    if (auto const* const string = std::get_if<std::string*>(&setting.destination)) {
        return **string;
    }
    int const* const number = std::get<int*>(setting.destination);
    return number != nullptr ? std::to_string(*number) : setting.fallback;
}

// "key=value" for each setting that differs from its default.
std::string changes() {
    std::string changed;
    for (Setting const& setting : SETTINGS) {
        std::string const value = valueOf(setting);
        changed += value != setting.fallback ? setting.key + "=" + value + "\n" : "";
    }
    return changed;
}

// Loads a file in a child process, and returns what it prints and which settings it changes.
std::string load(std::string const& text) {
    TempDir::write("be.cfg", text);
    ChildResult const child = inChild([] {
        BEConfig::init("be.cfg");
        fputs(changes().c_str(), stdout);
    });
    EXPECT_EQ(child.status, 0);
    return child.output;
}

TEST(SessionUptime, IsCutToWholeSeconds) {
    double before = 0.0;
    while (before - static_cast<int>(before) < 0.6) {  // until cutting and rounding differ
        before = std::stod(TempDir::read("/proc/uptime"));
    }
    int const uptime = BEConfig::get_Session_Uptime();
    EXPECT_GE(uptime, static_cast<int>(before));
    EXPECT_LE(uptime, std::stoi(TempDir::read("/proc/uptime")));
}

std::string defaults;  // members of a file, as text

// Loads a file with these members, and one more, which may replace one of them.
void loadMember(Call& c) {
    c.result = load("{" + defaults + ",'" + c.words[1] + "': " + c.words[2] + "}");
}

void loadTwice(Call& c) {
    c.result = inChild([&] {
                   BEConfig::init(c.word(1));
                   BEConfig::init("be.cfg");
               }).output;
}

}  // namespace

Commands const SETTING_COMMANDS = {
    {"config", [](Call& c) { c.result = load(c.word(1)); }},
    {"config-defaults", [](Call& c) { defaults = c.words[1]; }},
    {"config-member", loadMember},
    {"config-twice", loadTwice},
};
