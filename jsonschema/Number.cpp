// Exact arithmetic on the numbers of json-c.
#include "jsonschema/Number.h"

#include <assert.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <charconv>

namespace jsonschema {

namespace {

double const TWO_TO_64 = 18446744073709551616.0;

Number::Order reversed(Number::Order order) {
    switch (order) {
        case Number::LESS: return Number::GREATER;
        case Number::GREATER: return Number::LESS;
        default: return order;
    }
}

template <typename T>
Number::Order orderOf(T a, T b) {
    return a < b ? Number::LESS : b < a ? Number::GREATER : Number::EQUAL;
}

// (a + b) mod m for a, b < m, without overflow.
uint64_t addModulo(uint64_t a, uint64_t b, uint64_t m) { return a >= m - b ? a - (m - b) : a + b; }

uint64_t timesTenModulo(uint64_t a, uint64_t m) {
    uint64_t const two = addModulo(a, a, m);
    uint64_t const four = addModulo(two, two, m);
    return addModulo(two, addModulo(four, four, m), m);
}

}  // namespace

Number::Number(json_object* value) : isInteger_(json_object_is_type(value, json_type_int) != 0) {
    if (!isInteger_) {
        real_ = json_object_get_double(value);
        return;
    }
    int64_t const number = json_object_get_int64(value);
    negative_ = number < 0;
    magnitude_ = negative_ ? 0 - static_cast<uint64_t>(number) : static_cast<uint64_t>(number);
    if (number == INT64_MAX) {  // json-c's answer for any larger integer, too
        magnitude_ = json_object_get_uint64(value);
    }
}

Number::Order Number::compare(Number const& other) const {
    if (isInteger_ && other.isInteger_) {
        return compareIntegers(other.negative_, other.magnitude_);
    }
    if (isInteger_) {
        return compareWithReal(other.real_);
    }
    if (other.isInteger_) {
        return reversed(other.compareWithReal(real_));
    }
    return isnan(real_) || isnan(other.real_) ? UNORDERED : orderOf(real_, other.real_);
}

Number::Order Number::compareIntegers(bool negative, uint64_t magnitude) const {
    if (negative_ != negative) {
        return negative_ ? LESS : GREATER;
    }
    return negative_ ? orderOf(magnitude, magnitude_) : orderOf(magnitude_, magnitude);
}

Number::Order Number::compareWithReal(double real) const {
    if (isnan(real)) {
        return UNORDERED;
    }
    if (fabs(real) >= TWO_TO_64) {
        return real > 0 ? LESS : GREATER;
    }
    double const whole = trunc(real);
    Order const order = compareIntegers(
        whole < 0, static_cast<uint64_t>(fabs(whole)));  // exact, as it is below 2^64
    return order != EQUAL ? order : orderOf(whole, real);
}

bool Number::isFinite() const { return isInteger_ || isfinite(real_); }

bool Number::isWhole() const { return isInteger_ || (isfinite(real_) && trunc(real_) == real_); }

bool Number::isPositive() const { return isInteger_ ? !negative_ && magnitude_ != 0 : real_ > 0.0; }

uint64_t Number::hash() const {
    bool const fitsInteger = isInteger_ || (isWhole() && fabs(real_) < TWO_TO_64);
    if (!fitsInteger) {
        uint64_t bits = 0;
        static_assert(sizeof bits == sizeof real_);
        memcpy(&bits, &real_, sizeof bits);
        return bits;
    }
    uint64_t const magnitude = isInteger_ ? magnitude_ : static_cast<uint64_t>(fabs(real_));
    return negative_ || real_ < 0.0 ? ~magnitude : magnitude;
}

bool Number::isCount() const { return isInteger_ ? !negative_ : isWhole() && real_ >= 0.0; }

size_t Number::toSize() const {
    if (isInteger_) {
        return magnitude_ < SIZE_MAX ? static_cast<size_t>(magnitude_) : SIZE_MAX;
    }
    return real_ < static_cast<double>(SIZE_MAX) ? static_cast<size_t>(real_) : SIZE_MAX;
}

size_t Number::print(char (&text)[DIGITS]) const {
    char* at = text;
    if (isInteger_ && negative_) {
        *at++ = '-';
    }
    char* const end = text + sizeof text;
    at = isInteger_ ? std::to_chars(at, end, magnitude_).ptr
                    : std::to_chars(at, end, real_, std::chars_format::general).ptr;
    return static_cast<size_t>(at - text);
}

// Takes the double apart from its shortest decimal form:
//
//     -0.00125  ->  "1.25e-03"  ->  mantissa 125, exponent -3 - 2 = -5
Number::Decimal Number::absolute() const {
    if (isInteger_) {
        return {magnitude_, 0};
    }
    char text[40];  // "d.ddddddddddddddde-ddd"
    char* const end =
        std::to_chars(text, text + sizeof text, fabs(real_), std::chars_format::scientific).ptr;
    Decimal decimal = {0, 0};
    int fractionDigits = 0;
    char const* at = text;
    for (bool inFraction = false; *at != 'e'; ++at) {
        if (*at == '.') {
            inFraction = true;
            continue;
        }
        decimal.mantissa = decimal.mantissa * 10 + static_cast<unsigned int>(*at - '0');
        fractionDigits += inFraction ? 1 : 0;
    }
    bool const negativeExponent = at[1] == '-';
    std::from_chars(at + 2, end, decimal.exponent);
    decimal.exponent = (negativeExponent ? -decimal.exponent : decimal.exponent) - fractionDigits;
    return decimal;
}

// With value = v * 10^a and divisor = u * 10^b, both decimals, value / divisor = v / u * 10^(a -
// b).
//
// For a >= b, the remainder of v divided by u is multiplied by ten a - b times, always modulo u,
// which cannot overflow. For a < b, v must end in b - a zeros, and without them be a multiple of u.
bool Number::isMultipleOf(Number const& divisor, Budget& budget) const {
    if (!isFinite()) {
        return false;
    }
    Decimal const value = absolute();
    Decimal const unit = divisor.absolute();
    int shift = value.exponent - unit.exponent;
    assert(unit.mantissa != 0);  // the compiler refuses such a divisor
    if (value.mantissa == 0) {
        return true;
    }
    if (!budget.spend(static_cast<size_t>(abs(shift)) / 8)) {
        return false;
    }
    if (shift >= 0) {
        uint64_t rest = value.mantissa % unit.mantissa;
        for (; shift > 0 && rest != 0; --shift) {
            rest = timesTenModulo(rest, unit.mantissa);
        }
        return rest == 0;
    }
    uint64_t digits = value.mantissa;
    for (; shift < 0; ++shift) {
        if (digits % 10 != 0) {
            return false;
        }
        digits /= 10;
    }
    return digits % unit.mantissa == 0;
}

}  // namespace jsonschema
