// The ranges of numbers, from their digits: strtod depends on the locale, and std::from_chars does
// not tell a number that is too large from one that is too small.
#include "jsondata/NumberRange.h"

#include <limits.h>
#include <string.h>

namespace vobiutils {

namespace {

// A largest number: its digits, and the power of ten of the first one.
struct Limit {
    char const* digits;
    int power;
};

constexpr Limit UNSIGNED = {"18446744073709551615", 19};
constexpr Limit NEGATIVE = {"9223372036854775808", 18};
// 1.7976931348623157081e308. Another number with these digits is rounded to it.
constexpr Limit DOUBLE = {"17976931348623157", 308};

// The exponent of a number whose digits end at `at`. Clamped where the digits, which are fewer,
// cannot make up for it.
int exponentAt(char const* at, char const* end) {
    if (at == end) {
        return 0;
    }
    ++at;
    bool const isNegative = *at == '-';
    at += *at == '-' || *at == '+' ? 1 : 0;
    int const largest = INT_MAX / 2;
    int exponent = 0;
    for (; at < end; ++at) {
        exponent = exponent <= (largest - 9) / 10 ? exponent * 10 + (*at - '0') : largest;
    }
    return isNegative ? -exponent : exponent;
}

}  // namespace

// Notes the first 20 digits from the first one that is not 0, and its power of ten.
bool isInRange(char const* number, char const* end) {
    char digits[] = "00000000000000000000";
    size_t count = 0;
    int power = -1;
    bool hasPoint = false;
    bool const isNegative = *number == '-';
    char const* at = number + (isNegative ? 1 : 0);
    for (; at < end && *at != 'e' && *at != 'E'; ++at) {
        if (*at == '.') {
            hasPoint = true;
        } else if (count == 0 && *at == '0') {
            power -= hasPoint ? 1 : 0;
        } else {
            if (count < sizeof digits - 1) {
                digits[count++] = *at;
            }
            power += hasPoint ? 0 : 1;
        }
    }
    bool const isInteger = !hasPoint && at == end;
    Limit const& limit = !isInteger ? DOUBLE : isNegative ? NEGATIVE : UNSIGNED;
    power += exponentAt(at, end);
    return count == 0 || power < limit.power ||
           (power == limit.power && memcmp(digits, limit.digits, strlen(limit.digits)) <= 0);
}

}  // namespace vobiutils
