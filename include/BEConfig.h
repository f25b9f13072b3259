/// \file
/// Settings of the web back end.
///
/// Every setting is a public static of BEConfig with a compiled-in default, so it can be read at
/// any time, with or without a configuration file. BEConfig::init replaces defaults with the values
/// of the file, once per process.
///
/// Threads: call init on the main thread before any other thread uses the library; afterwards the
/// library only reads the settings, and any thread may read them. A program may change a
/// setting itself while no other thread is in the library.
#ifndef VOBIUTILS_BECONFIG_H
#define VOBIUTILS_BECONFIG_H

#include <string>

#pragma GCC visibility push(default)

/// \copydoc BEConfig.h
class BEConfig {
  public:
    /// Reads the configuration file `file` (one JSON object). Only the first call of a process reads
    /// anything; a later one logs a warning. A key that is missing or has the wrong type is
    /// reported on standard output and leaves its setting as it was. When a file was read,
    /// BELoginRecord::init follows, unless its "enable_bruteforce_prevent" is false or a number
    /// other than 1.
    ///
    /// A file that is missing, unreadable, not JSON or `null` (or a null `file`) leaves every
    /// default in force, silently. A file whose top value is not an object ENDS THE PROCESS with
    /// exit status 0, after a line on standard output.
    static void init(char const* file);

    /// Seconds since boot, fractions cut off; 0 when the system does not provide it. Any thread.
    static int get_Session_Uptime();

    /// \name Ports: comma-separated lists
    /// \{

    static std::string WEBSERVER_PORTS;   ///< "webserver_ports", default "8081,8082"
    static std::string IPV4_ALLOW_PORTS;  ///< "ipv4_allow_ports", default "8081,8082"
    static std::string IPV6_ALLOW_PORTS;  ///< "ipv6_allow_ports", default "8081"
    static std::string LAN_ALLOW_PORTS;   ///< "lan_allow_ports", default "8081,8082"
    static std::string WAN_ALLOW_PORTS;   ///< "wan_allow_ports", default "8081"
    static std::string WLAN_ALLOW_PORTS;  ///< "wlan_allow_ports", default empty

    /// \}
    /// \name Files and folders
    /// \{

    static std::string DATA_LOCATION;      ///< "data_location", default "./data"
    static std::string WEBSERVER_DOCROOT;  ///< "webserver_docroot", default "www/vobi"
    /// Default "url_rewrite.txt"; init inserts the string "url_rewrite_path" before it, without
    /// a separator.
    static std::string URL_REWRITE;
    static std::string DOWNLOAD_STORAGE;        ///< "download_storage", default "/tmp/be_download"
    static std::string UPLOAD_STORAGE;          ///< "upload_storage", default "/tmp/be_upload"
    static std::string SSL_CERTIFICATION_FILE;  ///< "ssl_certification_file", "./ssl_cert.pem"
    static std::string DUPLICATE_LOGIN_ENABLE;  ///< "duplicate_login_enable", a string; default ""
    static std::string LOG_FILE;                ///< "log_file", default "./BE.log"

    /// \}
    /// \name Numbers and 0/1 switches: the file may give an integer or a Boolean
    /// \{

    static int ENABLE_HTTPS;            ///< "enable_https", default 0
    static int REPO_TYPE;               ///< "repo_type", default 1
    static int API_VERSION;             ///< "api_version", default 0
    static int MULTIDB_MODE_ENABLE;     ///< "enable_multidb_mode", default 0
    static int LOG_TO_FILE;             ///< "log_to_file", default 1
    static int LOG_DEBUG_ENABLE;        ///< "log_debug_enable", default 1
    static int LOG_WARNING_ENABLE;      ///< "log_warning_enable", default 1
    static int LOG_INFO_ENABLE;         ///< "log_info_enable", default 1
    static int LOG_ERROR_ENABLE;        ///< "log_error_enable", default 1
    static int LOG_MASK;                ///< "log_mask", bit n for log group n, default 0x0FFFFFFF
    static int VALIDATION_ON_RESPONSE;  ///< "validation_on_response", default 1
    static int ENABLE_CROSS_DOMAIN;     ///< "enable_cross_domain", default 0
    static int ENABLE_BYPASS_TOKEN;     ///< "enable_bypass_token", default 0

    /// \}
    /// \name Authentication, from the file's member "system"
    /// \{

    /// Seconds: "system.cleanup_time" (minutes) times 60. Default 60; 3600 when the file has
    /// "system" without a usable "cleanup_time".
    static int AUTH_CLEANUP;

    static std::string AUTH_SECRET_STR;  ///< "system.domain_name", default: 29 characters

    /// Seconds: "system.timer.session" (minutes) times 60. Default 1440; 86400 when the file has
    /// "timer" without a usable "session".
    static int AUTH_EXPIRATION;

    /// \}
    /// \name Never set by the file
    /// \{

    static std::string SYSTEM_SCRIPT_DIR;  ///< default "scripts"
    static int WEBSERVER_PORT;             ///< default 8888
    static int GUEST_NETWORK_ENABLE;       ///< default 0

    /// \}

    static bool isInit;  ///< init has been called, successfully or not
};

#pragma GCC visibility pop

#endif
