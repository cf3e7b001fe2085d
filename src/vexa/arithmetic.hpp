// The arithmetic the engine needs beyond the C library: the 32-bit clamp that
// `%` and the falling product count with, the falling product itself, and the
// value of a number literal.
#pragma once

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace vexa {

// Truncates toward zero into 32 bits; out-of-range values clamp and NaN gives 0.
inline int to_int32(double x) {
  if (x != x) return 0;
  if (x >= 2147483647.0) return INT_MAX;
  if (x <= -2147483648.0) return INT_MIN;
  return static_cast<int>(x);
}

// Once a product is 0 or infinite, each further factor can only flip its sign (a
// negative one) or make it NaN (0 times infinity), so the rest need not be walked.
inline double settle_product(double r, double from, double b) {
  double lowest = b < -2147483648.0 ? -2147483648.0 : std::floor(b) + 1;
  if (std::isinf(r) && from >= 0 && lowest <= 0) {
    // The NaN of the multiplication itself, whose sign the platform chooses (x86
    // sets it); later factors pass a NaN on unchanged.
    volatile double zero = 0.0;
    return r * zero;
  }
  double highest_negative = from < -1 ? from : -1;
  double negatives = highest_negative >= lowest ? highest_negative - lowest + 1 : 0;
  return std::fmod(negatives, 2) == 1 ? -r : r;
}

// a!b: a times every integer from a-1 down to just above b. The counter is 32-bit;
// it stops at the bottom of its range, so a right operand below -2147483648 acts
// as -2147483649.
inline double falling_product(double a, double b) {
  double r = a;
  for (int k = to_int32(a - 1); k > b; --k) {
    r *= k;
    if (k == INT_MIN || r != r) break;
    if (r == 0 || std::isinf(r)) return settle_product(r, k - 1.0, b);
  }
  return r;
}

// a % b as a - b * q with q the quotient truncated to 32 bits.
inline double remainder_32(double a, double b) { return a - b * to_int32(a / b); }

// The value of a number literal exactly as strtod reads it: up to 15 digits make
// an exact integer and a power of ten up to 1e15 is exact, so their quotient is
// the correctly rounded value strtod gives; longer literals go to strtod.
inline double number_value(const char* p, std::size_t size) {
  static const double powers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  bool negative = *p == '-';
  uint64_t digits = 0;
  int count = 0, decimals = -1;
  for (const char* q = p + negative; q < p + size; ++q) {
    if (*q == '.') {
      decimals = 0;
      continue;
    }
    digits = digits * 10 + static_cast<uint64_t>(*q - '0');
    ++count;
    if (decimals >= 0) ++decimals;
  }
  if (count > 15) return std::strtod(p, nullptr);
  double v = static_cast<double>(digits);
  if (decimals > 0) v /= powers[decimals];
  return negative ? -v : v;
}

}  // namespace vexa
