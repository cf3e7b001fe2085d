// URL coding with AVX2 or AVX-512, for CPUs that have them (base::cpu tells): 32
// bytes are tested at once and the runs between escapes copied whole, or the
// codes of 64 bytes are made at once.
#pragma once

#include "base/x86/runs.hpp"

#if defined(VEXA_X86_AVX2_RUNS)
namespace base::x86 {

// The bytes that url_encode escapes, and their codes. Bit h of byte l of kept_rows
// tells whether the byte 16 * h + l is kept; bytes from 128 up are never kept.
struct url_escaped {
  explicit url_escaped(const uint8_t* rows) : kept_rows(_mm_loadu_si128(reinterpret_cast<const __m128i*>(rows))) {}
  __m128i kept_rows;

  // All ones at the bytes escaped.
  __attribute__((target("avx2"))) __m256i escaped(__m256i c) const {
    const __m256i low = _mm256_set1_epi8(15);
    __m256i rows = _mm256_broadcastsi128_si256(kept_rows);
    __m256i bit = _mm256_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0,
                                   1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
    __m256i row = _mm256_shuffle_epi8(rows, _mm256_and_si256(c, low));
    __m256i mine = _mm256_shuffle_epi8(bit, _mm256_and_si256(_mm256_srli_epi16(c, 4), low));
    return _mm256_cmpeq_epi8(_mm256_and_si256(row, mine), _mm256_setzero_si256());
  }

  __attribute__((target("avx2"))) uint32_t operator()(__m256i c) const {
    return static_cast<uint32_t>(_mm256_movemask_epi8(escaped(c)));
  }

  __attribute__((target("avx2"))) void planes(__m256i c, __m256i (&plane)[4]) const {
    __m256i escape = escaped(c);
    plane[0] = _mm256_blendv_epi8(c, _mm256_set1_epi8('%'), escape);
    hex_digit_planes(c, hex_digits + 16, escape, plane[1], plane[2]);
    plane[3] = _mm256_setzero_si256();
  }
};

// The codes of url_encode as planes. `sizes` holds the size of each byte's code:
// 1 for a byte that stays as it is.
struct url_escape_planes {
  const uint8_t* sizes;

  VEXA_AVX512_BYTES __mmask64 operator()(__m512i c, code_planes& p) const {
    __mmask64 escaped = ~_mm512_cmpeq_epi8_mask(lookup128(c, sizes), _mm512_set1_epi8(1));
    p.plane[0] = _mm512_mask_blend_epi8(escaped, c, _mm512_set1_epi8('%'));
    hex_digit_planes(c, hex_digits + 16, escaped, p.plane[1], p.plane[2]);
    p.plane[3] = _mm512_setzero_si512();
    return escaped;
  }
};

// Decodes while 64 bytes remain (a run is copied 32 bytes at a time from where
// it starts); returns the count of bytes taken and moves `out` past the bytes
// written. `digit` is the value of each byte as an escape digit; "+" is left as
// it is. `out` has room for a byte a byte, so the whole stores stay inside it.
__attribute__((target("avx2"))) inline std::size_t url_decode(const unsigned char* in, std::size_t n, char*& out,
                                                             const uint8_t* digit) {
  std::size_t i = 0;
  char* o = out;
  while (i + 64 <= n) {
    __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    uint32_t mask = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(c, _mm256_set1_epi8('%'))));
    std::size_t end = i + 32;
    if (__builtin_popcount(mask) > 6) {  // escapes close together: byte by byte
      while (i < end) {
        if (in[i] == '%') {
          *o++ = static_cast<char>(digit[in[i + 1]] * 16 + digit[in[i + 2]]);
          i += 3;
        } else {
          *o++ = static_cast<char>(in[i++]);
        }
      }
      continue;
    }
    unsigned from = 0;
    while (mask) {
      unsigned at = static_cast<unsigned>(__builtin_ctz(mask));
      copy32(o, in + i + from);
      o += at - from;
      *o++ = static_cast<char>(digit[in[i + at + 1]] * 16 + digit[in[i + at + 2]]);
      from = at + 3;
      mask &= at < 29 ? ~0u << from : 0;  // a "%" among the digits is a digit
    }
    if (from < 32) {
      copy32(o, in + i + from);
      o += 32 - from;
    }
    i += from > 32 ? from : 32;
  }
  out = o;
  return i;
}

}  // namespace base::x86
#endif
