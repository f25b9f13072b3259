// The settings: their defaults, the configuration file laid over them, and files that are no good.
#include "BEConfig.h"

#include <sstream>

#include "Support.h"

namespace {

// The keys of the file in the order in which they are read; values() has their settings in the same
// order, without "enable_bruteforce_prevent", which none holds.
std::string const TEXT_KEYS =
    "webserver_ports ipv4_allow_ports ipv6_allow_ports lan_allow_ports wan_allow_ports "
    "wlan_allow_ports data_location webserver_docroot url_rewrite_path download_storage "
    "upload_storage ssl_certification_file duplicate_login_enable log_file ";
std::string const NUMBER_KEYS =
    "enable_https repo_type api_version enable_multidb_mode log_to_file log_debug_enable "
    "log_warning_enable log_info_enable log_error_enable log_mask validation_on_response "
    "enable_bruteforce_prevent enable_cross_domain enable_bypass_token ";

template <typename... Values>
std::string join(Values const&... each) {
    std::ostringstream text;
    ((text << each << '|'), ...);
    return text.str();
}

std::string values() {
    using S = BEConfig;
    return join(S::WEBSERVER_PORTS, S::IPV4_ALLOW_PORTS, S::IPV6_ALLOW_PORTS, S::LAN_ALLOW_PORTS,
                S::WAN_ALLOW_PORTS, S::WLAN_ALLOW_PORTS, S::DATA_LOCATION, S::WEBSERVER_DOCROOT,
                S::URL_REWRITE, S::DOWNLOAD_STORAGE, S::UPLOAD_STORAGE, S::SSL_CERTIFICATION_FILE,
                S::DUPLICATE_LOGIN_ENABLE, S::LOG_FILE, S::ENABLE_HTTPS, S::REPO_TYPE,
                S::API_VERSION, S::MULTIDB_MODE_ENABLE, S::LOG_TO_FILE, S::LOG_DEBUG_ENABLE,
                S::LOG_WARNING_ENABLE, S::LOG_INFO_ENABLE, S::LOG_ERROR_ENABLE, S::LOG_MASK,
                S::VALIDATION_ON_RESPONSE, S::ENABLE_CROSS_DOMAIN, S::ENABLE_BYPASS_TOKEN,
                S::AUTH_CLEANUP, S::AUTH_SECRET_STR, S::AUTH_EXPIRATION, S::SYSTEM_SCRIPT_DIR,
                S::WEBSERVER_PORT, S::GUEST_NETWORK_ENABLE);
}

char const DEFAULTS[] =
    "8081,8082|8081,8082|8081|8081,8082|8081||./data|www/vobi|url_rewrite.txt|/tmp/be_download|"
    "/tmp/be_upload|./ssl_cert.pem||./BE.log|0|1|0|0|1|1|1|1|1|268435455|1|0|0|60|"
    "u8jzPde0IgxLd6GncfBAepfJBd0Kh|1440|scripts|8888|0|";
char const STARTED[] = "init: new record file is created\n";

// The two lines for each of some keys that is missing or of the wrong type.
std::string refused(std::string const& keys) {
    std::istringstream stream(keys);
    std::string lines;
    for (std::string key; stream >> key;) {
        bool const text = (TEXT_KEYS + "domain_name ").find(key + " ") != std::string::npos;
        lines += "Configuration error, parameter MUST be ";
        lines += text ? "string\n" : "integer or boolean\n";
        lines += "Configuration is wrong, use default value for " + key + "\n";
    }
    return lines;
}

// A file that has for each key a value of its own, from 100 on, and then one more member.
std::string fileWith(std::string const& key, std::string const& json) {
    std::istringstream keys(TEXT_KEYS + NUMBER_KEYS);
    std::string each;
    std::string file = "{";
    for (int value = 100; keys >> each; ++value) {
        std::string const quote = value < 114 ? "'" : "";
        file += "'" + each + "': " + quote + std::to_string(value) + quote + ", ";
    }
    return file + "'" + key + "': " + json + "}";
}

// What is printed by a process that loads `content` and then tells the values.
std::string load(TempDir const& dir, std::string const& content) {
    dir.write("be.cfg", content);
    ChildResult const child = inChild([] {
        BEConfig::init("be.cfg");
        fputs(values().c_str(), stdout);
    });
    EXPECT_EQ(child.status, 0);
    return child.output;
}

using BEConfigTest = LibraryTest;

TEST_F(BEConfigTest, EachKeySetsItsOwnMember) {
    char const json[] = "{'cleanup_time': 5, 'domain_name': 'D', 'timer': {'session': 30}}";
    EXPECT_EQ(
        load(dir, fileWith("system", json)),
        "100|101|102|103|104|105|106|107|108url_rewrite.txt|109|110|111|112|113|114|115|116|117|"
        "118|119|120|121|122|123|124|126|127|300|D|1800|scripts|8888|0|");
}

// In this process, so that a document that is not released shows as a leak.
TEST_F(BEConfigTest, AnEmptyObjectIsReportedKeyByKey) {
    dir.write("be.cfg", "{}");
    EXPECT_EQ(printed([] { BEConfig::init("be.cfg"); }),
              refused(TEXT_KEYS + NUMBER_KEYS) + STARTED);
    EXPECT_EQ(values(), DEFAULTS);
    BEConfig::isInit = false;
}

TEST_F(BEConfigTest, ValuesOfOneKey) {
    std::string const secret = "|u8jzPde0IgxLd6GncfBAepfJBd0Kh|";
    std::string const two = refused("cleanup_time domain_name");
    std::string const three = two + refused("session");
    std::tuple<char const*, char const*, std::string, std::string> const rows[] = {
        {"unknown", "[1]", "", "60" + secret + "1440"},
        {"log_mask", "true", "", "1"},
        {"log_mask", "false", "", "0"},
        {"log_mask", "5000000000", "", "2147483647"},
        {"log_mask", "-5000000000", "", "-2147483648"},
        {"log_mask", "3.5 '3' null [1] {}", refused("log_mask"), "268435455"},
        {"wan_allow_ports", "8080 true null ['1'] {}", refused("wan_allow_ports"), "8081"},
        {"url_rewrite_path", "7", refused("url_rewrite_path"), "url_rewrite.txt"},
        {"enable_bruteforce_prevent", "2 -1 0 false", "", "124|126"},
        {"enable_bruteforce_prevent", "1 true", STARTED, "124|126"},
        {"enable_bruteforce_prevent", "'x'", refused("enable_bruteforce_prevent") + STARTED,
         "124|126"},
        {"system", "{} null 7 [{}]", two, "3600" + secret + "1440"},
        {"system", "{'cleanup_time':5,'domain_name':'D'}", "", "300|D|1440"},
        {"system", "{'timer':{'session':30}}", two, "3600" + secret + "1800"},
        {"system", "{'timer':{}} {'timer':null} {'cleanup_time':'5','domain_name':5,'timer':7}",
         three, "3600" + secret + "86400"},
        {"system", "{'cleanup_time':2147483647,'domain_name':'','timer':{'session':71582789}}", "",
         "-60||44"},
    };
    for (auto const& [key, jsons, lines, expected] : rows) {
        std::istringstream stream(jsons);
        for (std::string json; stream >> json;) {
            std::string const output = load(dir, fileWith(key, json));
            EXPECT_EQ(output.substr(0, output.find("100|")), lines) << key << json;
            EXPECT_NE(output.find("|" + expected + "|"), std::string::npos)
                << key << json << output;
        }
    }
}

TEST_F(BEConfigTest, AFileThatCannotBeReadLeavesTheDefaultsAndIsTheOneCall) {
    for (char const* content : {"", "\x7f\x01{}", "{'log_mask': 1", "null"}) {
        EXPECT_EQ(load(dir, content), DEFAULTS) << content;
    }
    EXPECT_FALSE(TempDir::exists(".loginrecord.cfg"));
    // With a blank, without which a number or a word might still go on.
    for (char const* content : {"[{}]", "7 ", "'{}'", "false "}) {
        EXPECT_EQ(load(dir, content), "Configuration file be.cfg has wrong format, exit...\n");
    }
    for (char const* file : {"none", ".", static_cast<char const*>(nullptr)}) {
        auto const twice = [&] {
            BEConfig::init(file);
            BEConfig::init("be.cfg");
        };
        EXPECT_EQ(
            inChild(twice).output,
            "UTIL          | WARN: BEConfig::init: System configure is initialized already\n");
    }
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

}  // namespace
