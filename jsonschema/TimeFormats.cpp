// The formats of dates and times.
#include "jsonschema/TimeFormats.h"

#include <stddef.h>

namespace jsonschema {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

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

}  // namespace

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

}  // namespace jsonschema
