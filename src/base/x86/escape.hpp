// C-string escaping with AVX2, for CPUs that have it (base::cpu tells): 32 bytes
// are tested at once, and the printable run before the first byte that needs an
// escape is copied whole.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__)
#define VEXA_X86_AVX2_ESCAPE 1
#include <immintrin.h>

#include <cstddef>
#include <cstring>

#include "base/text.hpp"

namespace base::x86 {

// Escapes while 32 bytes remain; returns the count of bytes taken and moves `out`
// past the characters written. `codes` gives every byte's escape; the rest of
// the bytes are left to the portable code.
__attribute__((target("avx2,bmi"))) inline std::size_t c_escape(const unsigned char* in, std::size_t n, char*& out,
                                                               const byte_codes& codes) {
  std::size_t i = 0;
  char* o = out;
  while (i + 32 <= n) {
    __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    // Below 32 as signed bytes takes in 128 to 255 too.
    __m256i escaped = _mm256_or_si256(
        _mm256_or_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(32), c), _mm256_cmpeq_epi8(c, _mm256_set1_epi8(127))),
        _mm256_or_si256(_mm256_cmpeq_epi8(c, _mm256_set1_epi8('"')), _mm256_cmpeq_epi8(c, _mm256_set1_epi8('\\'))));
    unsigned mask = static_cast<unsigned>(_mm256_movemask_epi8(escaped));
    // The store is whole; the characters past the run are written over next.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), c);
    if (mask == 0) {
      o += 32, i += 32;
      continue;
    }
    if (__builtin_popcount(mask) > 4) {  // as in binary data: every byte through the table
      o += encode_bytes(codes, in + i, 32, o, [](uint64_t) { return false; });
      i += 32;
      continue;
    }
    unsigned run = static_cast<unsigned>(__builtin_ctz(mask));
    o += run, i += run;
    std::memcpy(o, codes.text[in[i]], 4);
    o += codes.size[in[i]];
    ++i;
  }
  out = o;
  return i;
}

}  // namespace base::x86
#endif
