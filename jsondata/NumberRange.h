// Whether a number of JSON fits into what json-c keeps numbers in.
#pragma once

namespace vobiutils {

// For a number of JSON's form, shorter than half of INT_MAX. An integer has to fit into 64 bits,
// signed if it is negative; a number with a fraction or an exponent must not be beyond the largest
// double. What is too small for a double is rounded to 0, and fits.
bool isInRange(char const* number, char const* end);

}  // namespace vobiutils
