// url_decode with AVX2: 32 bytes are searched for "%" at once, copied whole
// where there is none, and decoded with their escapes packed out where every
// "%" among them starts an escape.
#include <immintrin.h>

#include "base/kernels.hpp"

namespace base::x86 {

namespace {

// A lookup table indexed by a set of 8 bits that holds the places of its set
// bits from the lowest: the shuffle that packs the kept bytes of 8.
struct pack_shuffles {
  alignas(8) uint8_t take[256][8];
};

const pack_shuffles& packs() {
  static const pack_shuffles table = [] {
    pack_shuffles t{};
    for (int kept = 0; kept < 256; ++kept)
      for (int bit = 0, place = 0; bit < 8; ++bit)
        if (kept >> bit & 1) t.take[kept][place++] = static_cast<uint8_t>(bit);
    return t;
  }();
  return table;
}

// The value of a byte as an escape digit, as url.cpp's lookup table has it:
// x - 48, and 7 less above 64, 39 less above 96 (unsigned, modulo 256).
unsigned char digit_value(unsigned char x) {
  return static_cast<unsigned char>(x > 96 ? x - 87 : x > 64 ? x - 55 : x - 48);
}

// The same for 32 bytes at once.
__m256i digit_values(__m256i x) {
  const __m256i zero = _mm256_setzero_si256();
  __m256i above_64 = _mm256_andnot_si256(_mm256_cmpeq_epi8(_mm256_subs_epu8(x, _mm256_set1_epi8(64)), zero),
                                         _mm256_set1_epi8(7));
  __m256i above_96 = _mm256_andnot_si256(_mm256_cmpeq_epi8(_mm256_subs_epu8(x, _mm256_set1_epi8(96)), zero),
                                         _mm256_set1_epi8(32));
  return _mm256_sub_epi8(x, _mm256_add_epi8(_mm256_set1_epi8(48), _mm256_add_epi8(above_64, above_96)));
}

}  // namespace

// `out` has room for a byte a byte, so the whole stores stay inside it.
std::size_t url_decode_avx2(const unsigned char* in, std::size_t n, char*& out) {
  const pack_shuffles& pack = packs();
  std::size_t i = 0;
  char* o = out;
  while (i + 64 <= n) {
    __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    __m256i percent = _mm256_cmpeq_epi8(c, _mm256_set1_epi8('%'));
    uint32_t mask = static_cast<uint32_t>(_mm256_movemask_epi8(percent));
    if (mask == 0) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), c);
      o += 32;
      i += 32;
    } else if ((mask & (mask >> 1 | mask >> 2)) == 0) {
      // Every "%" starts an escape: its value takes its place, and its digits,
      // the two bytes after it, are packed out, 8 bytes at a time.
      __m256i high = digit_values(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i + 1)));
      __m256i low = digit_values(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i + 2)));
      __m256i value = _mm256_add_epi8(_mm256_and_si256(_mm256_slli_epi16(high, 4), _mm256_set1_epi8(-16)), low);
      __m256i text = _mm256_blendv_epi8(c, value, percent);
      uint32_t kept = ~(mask << 1 | mask << 2);
      const __m128i halves[2] = {_mm256_castsi256_si128(text), _mm256_extracti128_si256(text, 1)};
      for (int part = 0; part < 4; ++part) {
        unsigned bits = kept >> 8 * part & 0xff;
        __m128i eight = part % 2 ? _mm_srli_si128(halves[part / 2], 8) : halves[part / 2];
        _mm_storel_epi64(reinterpret_cast<__m128i*>(o),
                         _mm_shuffle_epi8(eight, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pack.take[bits]))));
        o += __builtin_popcount(bits);
      }
      // An escape at 30 or 31 has its digits in the next step, which starts after them.
      unsigned last = 31 - static_cast<unsigned>(__builtin_clz(mask));
      i += last >= 30 ? last + 3 : 32;
    } else {  // a "%" among an escape's digits: byte by byte
      for (std::size_t end = i + 32; i < end;) {
        if (in[i] == '%') {
          *o++ = static_cast<char>(digit_value(in[i + 1]) * 16 + digit_value(in[i + 2]));
          i += 3;
        } else {
          *o++ = static_cast<char>(in[i++]);
        }
      }
    }
  }
  out = o;
  return i;
}

}  // namespace base::x86
