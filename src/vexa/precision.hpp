// Doubles on 32-bit x86 without SSE2, where the x87 unit computes them. The build
// starts every program with the unit's precision set to a double's (-mpc64), so
// each operation rounds as IEEE double arithmetic does. The C library's own
// functions there are written for the unit's full 64-bit precision and lose
// accuracy at 53 bits, so they run with it restored. Elsewhere this is a no-op.
#pragma once

#include <cmath>

#if defined(__i386__) && !defined(__SSE2_MATH__)
#include <fpu_control.h>
#endif

namespace vexa {

#if defined(__i386__) && !defined(__SSE2_MATH__)
struct full_precision {
  fpu_control_t saved;
  full_precision() {
    _FPU_GETCW(saved);
    fpu_control_t full = (saved & ~_FPU_EXTENDED) | _FPU_EXTENDED;
    _FPU_SETCW(full);
  }
  ~full_precision() { _FPU_SETCW(saved); }
  full_precision(const full_precision&) = delete;
  full_precision& operator=(const full_precision&) = delete;
};

// Kept in memory, and so rounded to a double, while the full precision lasts.
inline double as_double(double x) {
  volatile double stored = x;
  return stored;
}
#else
struct full_precision {};
inline double as_double(double x) { return x; }
#endif

// f(x) exactly as the C library computes it.
template <double (*f)(double)>
double from_c_library(double x) {
  [[maybe_unused]] full_precision scope;
  return as_double(f(x));
}

inline double power(double x, double y) {
  [[maybe_unused]] full_precision scope;
  return as_double(std::pow(x, y));
}

}  // namespace vexa
