// url_decode with AVX-512 (BW and VBMI2): 64 bytes are searched for "%" at once,
// copied whole where there is none, and decoded where every "%" among them
// starts an escape, its two digits packed out by one compress.
#include <immintrin.h>

#include "base/kernels.hpp"

namespace base::x86 {

namespace {

// The value of 64 bytes as escape digits, as url.cpp's lookup table has it:
// x - 48, and 7 less above 64, 32 more less above 96 (modulo 256).
__m512i digit_values(__m512i x) {
  __m512i v = _mm512_sub_epi8(x, _mm512_set1_epi8(48));
  v = _mm512_mask_sub_epi8(v, _mm512_cmpgt_epu8_mask(x, _mm512_set1_epi8(64)), v, _mm512_set1_epi8(7));
  return _mm512_mask_sub_epi8(v, _mm512_cmpgt_epu8_mask(x, _mm512_set1_epi8(96)), v, _mm512_set1_epi8(32));
}

// One step byte by byte, for a "%" among an escape's digits; where it ends.
std::size_t decode_bytes(const unsigned char* in, std::size_t i, std::size_t end, char*& o) {
  auto digit = [](unsigned char x) { return static_cast<unsigned char>(x > 96 ? x - 87 : x > 64 ? x - 55 : x - 48); };
  while (i < end) {
    bool escape = in[i] == '%';
    *o++ = static_cast<char>(escape ? digit(in[i + 1]) * 16 + digit(in[i + 2]) : in[i]);
    i += escape ? 3 : 1;
  }
  return i;
}

}  // namespace

// `out` has room for a byte a byte, so the whole stores stay inside it.
std::size_t url_decode_avx512(const unsigned char* in, std::size_t n, char*& out) {
  std::size_t i = 0;
  char* o = out;
  while (i + 128 <= n) {
    __m512i c = _mm512_loadu_si512(in + i);
    uint64_t mask = _mm512_cmpeq_epi8_mask(c, _mm512_set1_epi8('%'));
    if (mask == 0) {
      _mm512_storeu_si512(o, c);
      o += 64;
      i += 64;
    } else if ((mask & (mask >> 1 | mask >> 2)) == 0) {
      // Every "%" starts an escape: its value takes its place, and its digits,
      // the two bytes after it, are packed out.
      __m512i high = digit_values(_mm512_loadu_si512(in + i + 1));
      __m512i low = digit_values(_mm512_loadu_si512(in + i + 2));
      __m512i value = _mm512_add_epi8(_mm512_and_si512(_mm512_slli_epi16(high, 4), _mm512_set1_epi8(-16)), low);
      uint64_t kept = ~(mask << 1 | mask << 2);
      _mm512_storeu_si512(o, _mm512_maskz_compress_epi8(kept, _mm512_mask_blend_epi8(mask, c, value)));
      o += __builtin_popcountll(kept);
      // An escape at 62 or 63 has its digits in the next step, which starts after them.
      unsigned last = 63 - static_cast<unsigned>(__builtin_clzll(mask));
      i += last >= 62 ? last + 3 : 64;
    } else {
      i = decode_bytes(in, i, i + 64, o);
    }
  }
  out = o;
  return i;
}

}  // namespace base::x86
