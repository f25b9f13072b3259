#include "jsonschema/Formats.h"

#include <arpa/inet.h>
#include <string.h>

#include "jsonschema/Pattern.h"

namespace jsonschema {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isAddress(std::string_view text, int family) {
    char copy[INET6_ADDRSTRLEN + 1];
    unsigned char address[sizeof(in6_addr)];
    if (text.size() >= sizeof copy || text.find('\0') != text.npos) {
        return false;
    }
    copy[text.copy(copy, text.size())] = '\0';
    return inet_pton(family, copy, address) == 1;
}

bool isIpv4(std::string_view text) { return isAddress(text, AF_INET); }
bool isIpv6(std::string_view text) { return isAddress(text, AF_INET6); }

// Reads fields of fixed width from the front of a text.
class Fields {
  public:
    explicit Fields(std::string_view text) : rest_(text) {}

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

// In minutes.
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
    int const day = 24 * 60;
    bool const beforeMidnight = (hour * 60 + minute - offset + day) % day == day - 1;
    return second < 60 || (second == 60 && beforeMidnight);  // a leap second
}

bool isDate(std::string_view text) {
    Fields fields(text);
    return takeDate(fields) && fields.atEnd();
}

bool isTime(std::string_view text) {
    Fields fields(text);
    return takeTime(fields) && fields.atEnd();
}

bool isDateTime(std::string_view text) {
    Fields fields(text);
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

bool isHostname(std::string_view text) {
    if (text.size() > 253) {
        return false;
    }
    for (;;) {
        size_t const dot = text.find('.');
        if (!isHostLabel(text.substr(0, dot))) {
            return false;
        }
        if (dot == text.npos) {
            return true;
        }
        text.remove_prefix(dot + 1);
    }
}

bool isMailCharacter(char c) {
    return isLetter(c) || isDigit(c) || (c != '\0' && strchr("!#$%&'*+/=?^_`{|}~.-", c) != nullptr);
}

bool isEmail(std::string_view text) {
    size_t const at = text.rfind('@');
    if (at == text.npos || at == 0 || at > 64) {
        return false;
    }
    std::string_view const local = text.substr(0, at);
    for (char c : local) {
        if (!isMailCharacter(c)) {
            return false;
        }
    }
    return local.front() != '.' && local.back() != '.' && local.find("..") == local.npos &&
           isHostname(text.substr(at + 1));
}

bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool isUriReference(std::string_view text) {
    for (size_t i = 0; i < text.size(); ++i) {
        char const c = text[i];
        bool const plain = isLetter(c) || isDigit(c) ||
                           (c != '\0' && strchr("-._~:/?#[]@!$&'()*+,;=", c) != nullptr);
        bool const escape =
            c == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2]);
        if (!plain && !escape) {
            return false;
        }
    }
    return text.find('#') == text.rfind('#');
}

bool isUri(std::string_view text) {
    std::string_view const scheme = text.substr(0, text.find(':'));
    for (char c : scheme) {
        if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') {
            return false;
        }
    }
    return !scheme.empty() && scheme.size() < text.size() && isLetter(scheme[0]) &&
           isUriReference(text);
}

bool isJsonPointer(std::string_view text) {
    for (size_t at = text.find('~'); at != text.npos; at = text.find('~', at + 1)) {
        char const next = at + 1 < text.size() ? text[at + 1] : '\0';
        if (next != '0' && next != '1') {
            return false;
        }
    }
    return text.empty() || text[0] == '/';
}

bool isRelativeJsonPointer(std::string_view text) {
    size_t digits = 0;
    while (digits < text.size() && isDigit(text[digits])) {
        ++digits;
    }
    std::string_view const rest = text.substr(digits);
    return digits > 0 && (digits == 1 || text[0] != '0') && (rest == "#" || isJsonPointer(rest));
}

struct Format {
    char const* name;
    bool (*test)(std::string_view);
};

Format const FORMATS[] = {
    {"date", isDate},
    {"date-time", isDateTime},
    {"email", isEmail},
    {"hostname", isHostname},
    {"ipv4", isIpv4},
    {"ipv6", isIpv6},
    {"json-pointer", isJsonPointer},
    {"relative-json-pointer", isRelativeJsonPointer},
    {"time", isTime},
    {"uri", isUri},
    {"uri-reference", isUriReference},
};

}  // namespace

bool hasFormat(std::string_view text, std::string_view format, Budget& budget) {
    if (!budget.spend(10 + text.size() / 8)) {
        return false;
    }
    if (format == "regex") {
        return Pattern(text, budget).isValid();
    }
    for (Format const& known : FORMATS) {
        if (format == known.name) {
            return known.test(text);
        }
    }
    return true;
}

}  // namespace jsonschema
