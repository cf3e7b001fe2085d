#include "base/cpu.hpp"

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#elif defined(__aarch64__) && defined(__linux__)
#include <sys/auxv.h>
#endif

namespace base::cpu {

namespace {

features probe() {
  features f;
#if defined(__x86_64__) && defined(__GNUC__)
  __builtin_cpu_init();
  unsigned a, b, c, d;
  f.sha_ni = __get_cpuid(1, &a, &b, &c, &d) && (c & bit_SSE4_1) && __get_cpuid_count(7, 0, &a, &b, &c, &d) &&
             (b & bit_SHA);
  f.avx2 = __builtin_cpu_supports("avx2");  // which also asks whether the kernel saves the registers
  f.avx512 = __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi") &&
             __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("popcnt");
#elif defined(__aarch64__) && defined(__linux__)
  unsigned long hwcap = getauxval(AT_HWCAP);
  f.armv8_sha1 = hwcap & HWCAP_SHA1;
  f.armv8_sha2 = hwcap & HWCAP_SHA2;
  f.neon = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ && (hwcap & HWCAP_ASIMD);
#endif
  return f;
}

}  // namespace

const features& detected() {
  static const features found = probe();
  return found;
}

}  // namespace base::cpu
