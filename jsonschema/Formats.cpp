// A test for each format, and the table of them.
#include "jsonschema/Formats.h"

#include <arpa/inet.h>
#include <string.h>

#include "jsonschema/Pattern.h"
#include "jsonschema/TimeFormats.h"

namespace jsonschema {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isAddress(std::string_view string, int family) {
    char copy[INET6_ADDRSTRLEN + 1];
    unsigned char address[sizeof(in6_addr)];
    if (string.size() >= sizeof copy || string.find('\0') != string.npos) {
        return false;
    }
    copy[string.copy(copy, string.size())] = '\0';
    return inet_pton(family, copy, address) == 1;
}

bool isIpv4(std::string_view string) { return isAddress(string, AF_INET); }
bool isIpv6(std::string_view string) { return isAddress(string, AF_INET6); }

bool isHostLabel(std::string_view label) {
    if (label.empty() || label.size() > 63 || label.front() == '-' || label.back() == '-') {
        return false;
    }
    for (char c : label) {
        if (!isLetter(c) && !isDigit(c) && c != '-') {
            return false;
        }
    }
    return true;
}

bool isHostname(std::string_view string) {
    if (string.size() > 253) {
        return false;
    }
    for (;;) {
        size_t const dot = string.find('.');
        if (!isHostLabel(string.substr(0, dot))) {
            return false;
        }
        if (dot == string.npos) {
            return true;
        }
        string.remove_prefix(dot + 1);
    }
}

bool isMailCharacter(char c) {
    return isLetter(c) || isDigit(c) || (c != '\0' && strchr("!#$%&'*+/=?^_`{|}~.-", c) != nullptr);
}

bool isEmail(std::string_view string) {
    size_t const at = string.rfind('@');
    if (at == string.npos || at == 0 || at > 64) {
        return false;
    }
    std::string_view const local = string.substr(0, at);
    for (char c : local) {
        if (!isMailCharacter(c)) {
            return false;
        }
    }
    return local.front() != '.' && local.back() != '.' && local.find("..") == local.npos &&
           isHostname(string.substr(at + 1));
}

bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool isUriReference(std::string_view string) {
    for (size_t i = 0; i < string.size(); ++i) {
        char const c = string[i];
        bool const plain = isLetter(c) || isDigit(c) ||
                           (c != '\0' && strchr("-._~:/?#[]@!$&'()*+,;=", c) != nullptr);
        bool const escape = c == '%' && i + 2 < string.size() && isHexDigit(string[i + 1]) &&
                            isHexDigit(string[i + 2]);
        if (!plain && !escape) {
            return false;
        }
    }
    return string.find('#') == string.rfind('#');
}

bool isUri(std::string_view string) {
    std::string_view const scheme = string.substr(0, string.find(':'));
    for (char c : scheme) {
        if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') {
            return false;
        }
    }
    return !scheme.empty() && scheme.size() < string.size() && isLetter(scheme[0]) &&
           isUriReference(string);
}

bool isJsonPointer(std::string_view string) {
    for (size_t at = string.find('~'); at != string.npos; at = string.find('~', at + 1)) {
        char const next = at + 1 < string.size() ? string[at + 1] : '\0';
        if (next != '0' && next != '1') {
            return false;
        }
    }
    return string.empty() || string[0] == '/';
}

bool isRelativeJsonPointer(std::string_view string) {
    size_t digits = 0;
    while (digits < string.size() && isDigit(string[digits])) {
        ++digits;
    }
    std::string_view const rest = string.substr(digits);
    return digits > 0 && (digits == 1 || string[0] != '0') && (rest == "#" || isJsonPointer(rest));
}

constexpr Format FORMATS[] = {
    {"date", "a date such as 2024-12-31", isDate},
    {"date-time", "a date and time such as 2024-12-31T23:59:00Z", isDateTime},
    {"email", "an e-mail address", isEmail},
    {"hostname", "a host name", isHostname},
    {"ipv4", "an IPv4 address", isIpv4},
    {"ipv6", "an IPv6 address", isIpv6},
    {"json-pointer", "a JSON pointer", isJsonPointer},
    {"regex", "a regular expression", nullptr},
    {"relative-json-pointer", "a relative JSON pointer", isRelativeJsonPointer},
    {"time", "a time such as 23:59:00Z", isTime},
    {"uri", "a URI", isUri},
    {"uri-reference", "a URI or a part of one", isUriReference},
};

}  // namespace

Format const* findFormat(std::string_view name) {
    for (Format const& format : FORMATS) {
        if (format.name == name) {
            return &format;
        }
    }
    return nullptr;
}

bool hasFormat(std::string_view string, Format const& format, Budget& budget) {
    if (!budget.spend(10 + string.size() / 8)) {
        return false;
    }
    return format.test != nullptr ? format.test(string) : Pattern(string, budget).isValid();
}

}  // namespace jsonschema
