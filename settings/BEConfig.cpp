// Defines the settings with their defaults, and reads the configuration file over them.
#include "BEConfig.h"

#include <json-c/json.h>
#include <stdio.h>
#include <stdlib.h>

#include "BELoginRecord.h"
#include "jsondata/files/FileDescriptor.h"
#include "jsondata/files/JsonFile.h"
#include "logging/Log.h"
#include "settings/ConfigTable.h"

using namespace vobiutils;

// Initialized before all ordinary static variables and destroyed after them, so that in a static
// build, too, the constructors and destructors of a program's static variables may use the library.
#define EARLY [[gnu::init_priority(101)]]

EARLY std::string BEConfig::WEBSERVER_PORTS = "8081,8082";
EARLY std::string BEConfig::IPV4_ALLOW_PORTS = "8081,8082";
EARLY std::string BEConfig::IPV6_ALLOW_PORTS = "8081";
EARLY std::string BEConfig::LAN_ALLOW_PORTS = "8081,8082";
EARLY std::string BEConfig::WAN_ALLOW_PORTS = "8081";
EARLY std::string BEConfig::WLAN_ALLOW_PORTS;
EARLY std::string BEConfig::DATA_LOCATION = "./data";
EARLY std::string BEConfig::WEBSERVER_DOCROOT = "www/vobi";
EARLY std::string BEConfig::URL_REWRITE = "url_rewrite.txt";
EARLY std::string BEConfig::DOWNLOAD_STORAGE = "/tmp/be_download";
EARLY std::string BEConfig::UPLOAD_STORAGE = "/tmp/be_upload";
EARLY std::string BEConfig::SSL_CERTIFICATION_FILE = "./ssl_cert.pem";
EARLY std::string BEConfig::DUPLICATE_LOGIN_ENABLE;
EARLY std::string BEConfig::LOG_FILE = "./BE.log";
int BEConfig::ENABLE_HTTPS = 0;
int BEConfig::REPO_TYPE = 1;
int BEConfig::API_VERSION = 0;
int BEConfig::MULTIDB_MODE_ENABLE = 0;
int BEConfig::LOG_TO_FILE = 1;
int BEConfig::LOG_DEBUG_ENABLE = 1;
int BEConfig::LOG_WARNING_ENABLE = 1;
int BEConfig::LOG_INFO_ENABLE = 1;
int BEConfig::LOG_ERROR_ENABLE = 1;
int BEConfig::LOG_MASK = 0x0FFFFFFF;
int BEConfig::VALIDATION_ON_RESPONSE = 1;
int BEConfig::ENABLE_CROSS_DOMAIN = 0;
int BEConfig::ENABLE_BYPASS_TOKEN = 0;
int BEConfig::AUTH_CLEANUP = 60;
EARLY std::string BEConfig::AUTH_SECRET_STR = "u8jzPde0IgxLd6GncfBAepfJBd0Kh";
int BEConfig::AUTH_EXPIRATION = 1440;
EARLY std::string BEConfig::SYSTEM_SCRIPT_DIR = "scripts";
int BEConfig::WEBSERVER_PORT = 8888;
int BEConfig::GUEST_NETWORK_ENABLE = 0;
bool BEConfig::isInit = false;

namespace {

// Members of the file that are used while it is read, and kept in no setting.
struct Extras {
    std::string urlPrefix;
    int preventBruteForce = 1;
};

void readTopLevel(json_object* file, Extras& extras) {
    ConfigRow const rows[] = {
        {"webserver_ports", BEConfig::WEBSERVER_PORTS},
        {"ipv4_allow_ports", BEConfig::IPV4_ALLOW_PORTS},
        {"ipv6_allow_ports", BEConfig::IPV6_ALLOW_PORTS},
        {"lan_allow_ports", BEConfig::LAN_ALLOW_PORTS},
        {"wan_allow_ports", BEConfig::WAN_ALLOW_PORTS},
        {"wlan_allow_ports", BEConfig::WLAN_ALLOW_PORTS},
        {"data_location", BEConfig::DATA_LOCATION},
        {"webserver_docroot", BEConfig::WEBSERVER_DOCROOT},
        {"url_rewrite_path", extras.urlPrefix},
        {"download_storage", BEConfig::DOWNLOAD_STORAGE},
        {"upload_storage", BEConfig::UPLOAD_STORAGE},
        {"ssl_certification_file", BEConfig::SSL_CERTIFICATION_FILE},
        {"duplicate_login_enable", BEConfig::DUPLICATE_LOGIN_ENABLE},
        {"log_file", BEConfig::LOG_FILE},
        {"enable_https", BEConfig::ENABLE_HTTPS},
        {"repo_type", BEConfig::REPO_TYPE},
        {"api_version", BEConfig::API_VERSION},
        {"enable_multidb_mode", BEConfig::MULTIDB_MODE_ENABLE},
        {"log_to_file", BEConfig::LOG_TO_FILE},
        {"log_debug_enable", BEConfig::LOG_DEBUG_ENABLE},
        {"log_warning_enable", BEConfig::LOG_WARNING_ENABLE},
        {"log_info_enable", BEConfig::LOG_INFO_ENABLE},
        {"log_error_enable", BEConfig::LOG_ERROR_ENABLE},
        {"log_mask", BEConfig::LOG_MASK},
        {"validation_on_response", BEConfig::VALIDATION_ON_RESPONSE},
        {"enable_bruteforce_prevent", extras.preventBruteForce},
        {"enable_cross_domain", BEConfig::ENABLE_CROSS_DOMAIN},
        {"enable_bypass_token", BEConfig::ENABLE_BYPASS_TOKEN},
    };
    readRows(file, rows);
}

// Multiplies unsigned: a number too large wraps around instead of being undefined behaviour.
void minutesToSeconds(int& setting) {
    setting = static_cast<int>(static_cast<unsigned int>(setting) * 60U);
}

// Reads the members of "system", whose times are in minutes.
//
// intended: a time is converted to seconds whenever its parent object is present, even if its own
// key was missing. So the effective default depends on the parent: without "system" AUTH_CLEANUP
// stays 60, with an empty one it becomes 3600.
void readSystem(json_object* system) {
    readRow(system, {"cleanup_time", BEConfig::AUTH_CLEANUP});
    minutesToSeconds(BEConfig::AUTH_CLEANUP);
    readRow(system, {"domain_name", BEConfig::AUTH_SECRET_STR});
    json_object* timer = nullptr;
    if (json_object_object_get_ex(system, "timer", &timer)) {
        readRow(timer, {"session", BEConfig::AUTH_EXPIRATION});
        minutesToSeconds(BEConfig::AUTH_EXPIRATION);
    }
}

void readSettings(json_object* file) {
    Extras extras;
    readTopLevel(file, extras);
    prepend(extras.urlPrefix, BEConfig::URL_REWRITE);
    json_object* system = nullptr;
    if (json_object_object_get_ex(file, "system", &system)) {
        readSystem(system);
    }
    if (extras.preventBruteForce == 1) {
        BELoginRecord::init();
    }
}

}  // namespace

void BEConfig::init(char const* file) {
    if (isInit) {
        UTIL_WARN("%s: System configure is initialized already\n", "BEConfig::init");
        return;
    }
    isInit = true;  // first, because a failed call counts, too
    json_object* const document = readJsonFile(file);
    if (document == nullptr) {
        return;
    }
    if (!json_object_is_type(document, json_type_object)) {
        printf("Configuration file %s has wrong format, exit...\n", file);
        exit(0);
    }
    readSettings(document);
    json_object_put(document);
}

int BEConfig::get_Session_Uptime() {
    FileDescriptor const file("/proc/uptime", O_RDONLY);
    if (!file) {
        return 0;
    }
    char text[40] = {};
    if (file.readFully(text, sizeof text - 1) <= 0) {
        puts("Configuration file /proc/uptime has wrong format, exit...");
        return 0;
    }
    return static_cast<int>(strtoull(text, nullptr, 10));
}
