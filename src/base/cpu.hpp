// What this CPU offers beyond the portable code, probed once, at first use.
// Every path that runs chip-specific instructions asks here, and nowhere else, so
// that tests and benchmarks can switch all of them off at one place.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#elif defined(__aarch64__) && defined(__linux__)
#include <sys/auxv.h>
#endif

namespace base::cpu {

struct features {
  bool x86_sha = false;   // the SHA extensions, with SSE4.1
  bool avx2 = false;
  bool avx512_vbmi2 = false;  // AVX-512 with its byte permutes (BW, VBMI) and byte compress (VBMI2)
  bool arm_sha1 = false;  // the ARMv8 cryptography instructions
  bool arm_sha2 = false;
  bool neon = false;      // Advanced SIMD, on every little-endian arm64
};

inline features probe() {
  features f;
#if defined(__x86_64__) && defined(__GNUC__)
  __builtin_cpu_init();
  unsigned a, b, c, d;
  f.x86_sha = __get_cpuid(1, &a, &b, &c, &d) && (c & bit_SSE4_1) && __get_cpuid_count(7, 0, &a, &b, &c, &d) &&
              (b & bit_SHA);
  f.avx2 = __builtin_cpu_supports("avx2");  // which also asks whether the kernel saves the registers
  f.avx512_vbmi2 = __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi") &&
                   __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("popcnt");
#elif defined(__aarch64__) && defined(__linux__)
  unsigned long hwcap = getauxval(AT_HWCAP);
  f.arm_sha1 = hwcap & HWCAP_SHA1;
  f.arm_sha2 = hwcap & HWCAP_SHA2;
  f.neon = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ && (hwcap & HWCAP_ASIMD);
#endif
  return f;
}

// When set, every path runs the portable code, as on a machine without extras.
inline bool portable_only = false;

// Features set here are treated as missing, so that tests and benchmarks can run
// the paths a CPU without them takes.
inline features withheld;

// Whether a path may use `feature`, e.g. has(&features::avx2).
inline bool has(bool features::*feature) {
  static const features detected = probe();
  return !portable_only && detected.*feature && !(withheld.*feature);
}

}  // namespace base::cpu
