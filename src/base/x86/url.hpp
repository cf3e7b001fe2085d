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

  __attribute__((target("avx2"))) void planes(__m256i c, __m256i escape, __m256i (&plane)[4]) const {
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

// For each set of 8 bits, the places of its set bits from the lowest: the
// shuffle that packs the bytes kept of 8.
struct pack_shuffles {
  alignas(8) uint8_t take[256][8];
};

inline const pack_shuffles& packs() {
  static const pack_shuffles table = [] {
    pack_shuffles t{};
    for (int kept = 0; kept < 256; ++kept)
      for (int bit = 0, place = 0; bit < 8; ++bit)
        if (kept >> bit & 1) t.take[kept][place++] = static_cast<uint8_t>(bit);
    return t;
  }();
  return table;
}

// The value of each byte as an escape digit, as url_decode_block's table has
// it: x - 48, and 7 less above 64, 39 less above 96 (unsigned, modulo 256).
__attribute__((target("avx2"))) inline __m256i digit_values(__m256i x) {
  const __m256i zero = _mm256_setzero_si256();
  __m256i above_64 = _mm256_andnot_si256(_mm256_cmpeq_epi8(_mm256_subs_epu8(x, _mm256_set1_epi8(64)), zero),
                                         _mm256_set1_epi8(7));
  __m256i above_96 = _mm256_andnot_si256(_mm256_cmpeq_epi8(_mm256_subs_epu8(x, _mm256_set1_epi8(96)), zero),
                                         _mm256_set1_epi8(32));
  return _mm256_sub_epi8(x, _mm256_add_epi8(_mm256_set1_epi8(48), _mm256_add_epi8(above_64, above_96)));
}

// Decodes while 64 bytes remain; returns the count of bytes taken and moves
// `out` past the bytes written. `digit` is the value of each byte as an escape
// digit; "+" is left as it is. `out` has room for a byte a byte, so the whole
// stores stay inside it.
__attribute__((target("avx2"))) inline std::size_t url_decode(const unsigned char* in, std::size_t n, char*& out,
                                                             const uint8_t* digit) {
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
          *o++ = static_cast<char>(digit[in[i + 1]] * 16 + digit[in[i + 2]]);
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
#endif
