// URL decoding with AVX2, for CPUs that have it (base::cpu tells): 32 bytes are
// searched for "%" at once, and the run before it is copied whole.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__)
#define VEXA_X86_AVX2_URL 1
#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace base::x86 {

// Decodes while 32 bytes remain and every escape met is whole; returns the count
// of bytes taken and moves `out` past the bytes written. `digit` is the value of
// each byte as an escape digit; "+" is left as it is.
__attribute__((target("avx2,bmi"))) inline std::size_t url_decode(const unsigned char* in, std::size_t n, char*& out,
                                                                 const uint8_t* digit) {
  std::size_t i = 0;
  char* o = out;
  while (i + 32 <= n) {
    __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    unsigned mask = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(c, _mm256_set1_epi8('%'))));
    // The store is whole; the bytes past the run are written over next.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), c);
    unsigned run = mask ? static_cast<unsigned>(__builtin_ctz(mask)) : 32;
    o += run, i += run;
    if (!mask) continue;
    if (i + 2 >= n) break;  // an escape cut by the end: the portable code knows what to do
    *o++ = static_cast<char>(digit[in[i + 1]] * 16 + digit[in[i + 2]]);
    i += 3;
  }
  out = o;
  return i;
}

}  // namespace base::x86
#endif
