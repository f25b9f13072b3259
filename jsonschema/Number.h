// Compares and divides JSON numbers exactly. A 64-bit integer is an integer. A double stands for
// the shortest decimal that reads back as the same double (0.1 is one tenth).
#pragma once

#include <json-c/json.h>
#include <stdint.h>

#include "jsonschema/Budget.h"

namespace jsonschema {

class Number {
  public:
    explicit Number(json_object* value);  // of type int or double

    enum Order { LESS, EQUAL, GREATER, UNORDERED };
    Order compare(Number const& other) const;

    bool isFinite() const;
    bool isWhole() const;  // has no fraction
    bool isPositive() const;
    bool isMultipleOf(Number const& divisor, Budget& budget) const;  // divisor: positive and finite

    // Equal for equal numbers, and rarely for different ones.
    uint64_t hash() const;

    // A count is whole and not negative. toSize returns SIZE_MAX for one that does not fit.
    bool isCount() const;
    size_t toSize() const;

    // Writes the shortest decimal, without a NUL, and returns its length.
    static constexpr size_t DIGITS = 32;
    size_t print(char (&text)[DIGITS]) const;

  private:
    // mantissa * 10 ^ exponent
    struct Decimal {
        uint64_t mantissa;
        int exponent;
    };
    Decimal absolute() const;
    Order compareIntegers(bool negative, uint64_t magnitude) const;
    Order compareWithReal(double real) const;

    bool isInteger_;
    bool negative_ = false;
    uint64_t magnitude_ = 0;
    double real_ = 0.0;
};

}  // namespace jsonschema
