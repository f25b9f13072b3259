// A test for each format, and the table of them.
#include "jsonschema/Formats.h"

#include <arpa/inet.h>
#include <string.h>

#include "jsonschema/Pattern.h"

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

// Consumes a string from the front, one field of fixed width at a time. Every function is false
// when the string does not continue like that.
class Fields {
  public:
    explicit Fields(std::string_view string) : rest_(string) {}

    bool number(size_t digits, int& value) {
        value = 0;
        if (rest_.size() < digits) {
            return false;
        }
        for (size_t i = 0; i < digits; ++i) {
            if (!isDigit(rest_[i])) {
                return false;
            }
            value = value * 10 + (rest_[i] - '0');
        }
        rest_.remove_prefix(digits);
        return true;
    }

    bool oneOf(std::string_view characters) {
        if (rest_.empty() || characters.find(rest_[0]) == characters.npos) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    bool atEnd() const { return rest_.empty(); }

  private:
    std::string_view rest_;
};

int daysIn(int year, int month) {
    static int const days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    bool const leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : days[month - 1];
}

bool takeDate(Fields& fields) {
    int year = 0;
    int month = 0;
    int day = 0;
    return fields.number(4, year) && fields.oneOf("-") && fields.number(2, month) &&
           fields.oneOf("-") && fields.number(2, day) && month >= 1 && month <= 12 && day >= 1 &&
           day <= daysIn(year, month);
}

// Reads the offset from UTC, in minutes.
bool takeOffset(Fields& fields, int& offset) {
    int hours = 0;
    int minutes = 0;
    offset = 0;
    if (fields.oneOf("zZ")) {
        return true;
    }
    bool const ahead = fields.oneOf("+");
    if ((!ahead && !fields.oneOf("-")) || !fields.number(2, hours) || !fields.oneOf(":") ||
        !fields.number(2, minutes) || hours > 23 || minutes > 59) {
        return false;
    }
    offset = (ahead ? 1 : -1) * (hours * 60 + minutes);
    return true;
}

bool takeFraction(Fields& fields) {
    int digit = 0;
    if (!fields.oneOf(".")) {
        return true;
    }
    if (!fields.number(1, digit)) {
        return false;
    }
    while (fields.number(1, digit)) {
    }
    return true;
}

bool takeTime(Fields& fields) {
    int hour = 0;
    int minute = 0;
    int second = 0;
    int offset = 0;
    if (!fields.number(2, hour) || !fields.oneOf(":") || !fields.number(2, minute) ||
        !fields.oneOf(":") || !fields.number(2, second) || !takeFraction(fields) ||
        !takeOffset(fields, offset) || hour > 23 || minute > 59) {
        return false;
    }
    // a leap second is the last one of a day in UTC
    int const day = 24 * 60;
    bool const beforeMidnight = (hour * 60 + minute - offset + day) % day == day - 1;
    return second < 60 || (second == 60 && beforeMidnight);
}

bool isDate(std::string_view string) {
    Fields fields(string);
    return takeDate(fields) && fields.atEnd();
}

bool isTime(std::string_view string) {
    Fields fields(string);
    return takeTime(fields) && fields.atEnd();
}

bool isDateTime(std::string_view string) {
    Fields fields(string);
    return takeDate(fields) && fields.oneOf("tT") && takeTime(fields) && fields.atEnd();
}

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
