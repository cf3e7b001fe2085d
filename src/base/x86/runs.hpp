// Byte-wise encoders with AVX2, for CPUs that have it (base::cpu tells): 32 bytes
// are tested at once, and the runs between the bytes that change are copied
// whole. The encoder supplies the test; escape and url_encode share the rest.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__)
#define VEXA_X86_AVX2_RUNS 1
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/text.hpp"

namespace base::x86 {

__attribute__((target("avx2"))) inline void copy32(char* to, const unsigned char* from) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
}

// Encodes while 64 bytes remain (a run is copied 32 bytes at a time from where
// it starts, so that many more must be there to read); returns the count of
// bytes taken and moves `out` past the characters written. `changed(bytes)` is
// the mask of the 32 bytes whose code is not the byte itself, and `codes` gives
// every byte's code. `out` has room for 4 characters a byte, so the whole
// stores, whose tails are written over next, stay inside it.
template <class Changed>
__attribute__((target("avx2"))) inline std::size_t encode_runs(const unsigned char* in, std::size_t n, char*& out,
                                                              const byte_codes& codes, Changed changed) {
  std::size_t i = 0;
  char* o = out;
  for (; i + 64 <= n; i += 32) {
    __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    uint32_t mask = changed(bytes);
    if (mask == 0) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), bytes);
      o += 32;
    } else if (__builtin_popcount(mask) > 8) {  // as in binary data: every byte through the table
      o += encode_bytes(codes, in + i, 32, o, never_unchanged);
    } else {
      unsigned from = 0;
      for (; mask; mask &= mask - 1) {
        unsigned at = static_cast<unsigned>(__builtin_ctz(mask));
        copy32(o, in + i + from);
        o += at - from;
        std::memcpy(o, codes.text[in[i + at]], 4);
        o += codes.size[in[i + at]];
        from = at + 1;
      }
      copy32(o, in + i + from);
      o += 32 - from;
    }
  }
  out = o;
  return i;
}

}  // namespace base::x86
#endif
