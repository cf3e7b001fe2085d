// Byte-wise encoders with AVX2 or AVX-512, for CPUs that have them (base::cpu
// tells). With AVX2, 32 bytes are tested at once and the runs between the bytes
// that change are copied whole, or, where many change, their codes are made at
// once and shuffled into place four bytes at a time; with AVX-512, 64 bytes are
// coded at once and the unused places packed out. The encoder supplies the test
// and the codes; escape and url_encode share the rest.
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

// The shuffles that put the codes of four bytes in a row, chosen by the sizes
// of the codes, two bits a byte (size - 1, byte i at bits 2i): the places of
// the group's planes to take (character k of byte i at place 4k + i), and the
// count of characters.
struct group_shuffles {
  alignas(16) uint8_t take[256][16];
  uint8_t size[256];
};

inline const group_shuffles& shuffles() {
  static const group_shuffles table = [] {
    group_shuffles t{};
    for (int sizes = 0; sizes < 256; ++sizes) {
      int place = 0;
      for (int i = 0; i < 4; ++i)
        for (int k = 0; k <= (sizes >> 2 * i & 3); ++k) t.take[sizes][place++] = static_cast<uint8_t>(4 * k + i);
      t.size[sizes] = static_cast<uint8_t>(place);
    }
    return t;
  }();
  return table;
}

// Writes the codes of 32 bytes given as planes (character k of byte i's code is
// byte i of plane k, 0 where the code is shorter; no code has a zero byte) and
// returns the end of them. Every store is 16 bytes, the places past a group's
// codes written over by the next group.
__attribute__((target("avx2"))) inline char* write_planes(const __m256i (&plane)[4], char* o,
                                                          const group_shuffles& s) {
  const __m256i zero = _mm256_setzero_si256();
  // Each byte's size less one is 3 less one for each plane from the second that is 0 there.
  __m256i less_one = _mm256_add_epi8(
      _mm256_add_epi8(_mm256_cmpeq_epi8(plane[1], zero), _mm256_cmpeq_epi8(plane[2], zero)),
      _mm256_add_epi8(_mm256_cmpeq_epi8(plane[3], zero), _mm256_set1_epi8(3)));
  // Of each group of four, l0 + 4 l1 + 16 l2 + 64 l3: groups 0 to 3 in the low half, 4 to 7 in the high.
  alignas(32) uint32_t sizes[8];
  _mm256_store_si256(reinterpret_cast<__m256i*>(sizes),
                     _mm256_madd_epi16(_mm256_maddubs_epi16(less_one, _mm256_set1_epi16(0x0401)),
                                       _mm256_set1_epi32(0x00100001)));
  // Four bytes of each plane side by side: group k in the low half, group k + 4 in the high.
  __m256i a = _mm256_unpacklo_epi32(plane[0], plane[1]), b = _mm256_unpackhi_epi32(plane[0], plane[1]);
  __m256i c = _mm256_unpacklo_epi32(plane[2], plane[3]), d = _mm256_unpackhi_epi32(plane[2], plane[3]);
  const __m256i groups[4] = {_mm256_unpacklo_epi64(a, c), _mm256_unpackhi_epi64(a, c), _mm256_unpacklo_epi64(b, d),
                             _mm256_unpackhi_epi64(b, d)};
  __m256i text[4];
  for (int k = 0; k < 4; ++k) {
    __m128i low = _mm_load_si128(reinterpret_cast<const __m128i*>(s.take[sizes[k]]));
    __m128i high = _mm_load_si128(reinterpret_cast<const __m128i*>(s.take[sizes[k + 4]]));
    text[k] = _mm256_shuffle_epi8(groups[k], _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1));
  }
  for (int k = 0; k < 4; ++k) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(o), _mm256_castsi256_si128(text[k]));
    o += s.size[sizes[k]];
  }
  for (int k = 0; k < 4; ++k) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(o), _mm256_extracti128_si256(text[k], 1));
    o += s.size[sizes[k + 4]];
  }
  return o;
}

// The hex digits of each byte's high and low half, from `digits` (16
// characters), where `where` is all ones, and 0 elsewhere.
__attribute__((target("avx2"))) inline void hex_digit_planes(__m256i bytes, const char* digits, __m256i where,
                                                             __m256i& high, __m256i& low) {
  const __m256i table = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(digits)));
  const __m256i nibble = _mm256_set1_epi8(15);
  high = _mm256_and_si256(where, _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi16(bytes, 4), nibble)));
  low = _mm256_and_si256(where, _mm256_shuffle_epi8(table, _mm256_and_si256(bytes, nibble)));
}

// Encodes while 64 bytes remain (a run is copied 32 bytes at a time from where
// it starts, so that many more must be there to read); returns the count of
// bytes taken and moves `out` past the characters written.
// `changed.escaped(bytes)` is all ones at the bytes whose code is not the byte
// itself, `changed.planes(bytes, escaped, planes)` makes their codes as planes,
// and `codes` gives every byte's code. `out` has room for 4 characters a byte, so the
// whole stores, whose tails are written over next, stay inside it.
template <class Changed>
__attribute__((target("avx2"))) inline std::size_t encode_runs(const unsigned char* in, std::size_t n, char*& out,
                                                              const byte_codes& codes, Changed changed) {
  // Past this many changed bytes in 32 the codes of all cost less than the runs
  // (binary data, or text with blanks escaped); measured here with 2 to 12.
  const int dense = 4;
  const group_shuffles& groups = shuffles();
  std::size_t i = 0;
  char* o = out;
  for (; i + 64 <= n; i += 32) {
    __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    __m256i escaped = changed.escaped(bytes);
    uint32_t mask = static_cast<uint32_t>(_mm256_movemask_epi8(escaped));
    if (mask == 0) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), bytes);
      o += 32;
    } else if (__builtin_popcount(mask) > dense) {
      __m256i plane[4];
      changed.planes(bytes, escaped, plane);
      o = write_planes(plane, o, groups);
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

#define VEXA_AVX512_BYTES __attribute__((target("avx512f,avx512bw,avx512vbmi,avx512vbmi2,popcnt")))

// The codes of 64 bytes as four planes: character k of byte i's code is byte i
// of plane k, and 0 where the code is shorter (no code has a zero byte).
struct code_planes {
  __m512i plane[4];
};

// Encodes while 64 bytes remain; returns the count of bytes taken and moves `out`
// past the characters written. `codes(bytes, planes)` fills the planes and
// returns the mask of the bytes whose code is not the byte itself. Each group of
// 16 bytes is written as the 64 places of its codes with the zeros packed out;
// `out` has room for 4 characters a byte, so the whole stores stay inside it.
template <class Codes>
VEXA_AVX512_BYTES inline std::size_t encode_planes(const unsigned char* in, std::size_t n, char*& out, Codes codes) {
  // Place 4i + k takes byte i of plane k: even k from the first of two planes
  // (index below 64), odd k from the second.
  alignas(64) static const uint8_t pairs[64] = {
      0,  64, 0,  64, 1,  65, 1,  65, 2,  66, 2,  66, 3,  67, 3,  67, 4,  68, 4,  68, 5,  69,
      5,  69, 6,  70, 6,  70, 7,  71, 7,  71, 8,  72, 8,  72, 9,  73, 9,  73, 10, 74, 10, 74,
      11, 75, 11, 75, 12, 76, 12, 76, 13, 77, 13, 77, 14, 78, 14, 78, 15, 79, 15, 79};
  const __mmask64 from_planes_2_and_3 = 0xccccccccccccccccull;
  std::size_t i = 0;
  char* o = out;
  for (; i + 64 <= n; i += 64) {
    __m512i bytes = _mm512_loadu_si512(in + i);
    code_planes p;
    if (!codes(bytes, p)) {
      _mm512_storeu_si512(o, bytes);
      o += 64;
      continue;
    }
    __m512i index = _mm512_load_si512(pairs);
    for (int group = 0; group < 4; ++group) {
      __m512i text = _mm512_mask_blend_epi8(from_planes_2_and_3,
                                            _mm512_permutex2var_epi8(p.plane[0], index, p.plane[1]),
                                            _mm512_permutex2var_epi8(p.plane[2], index, p.plane[3]));
      __mmask64 used = _mm512_test_epi8_mask(text, text);
      _mm512_storeu_si512(o, _mm512_maskz_compress_epi8(used, text));
      o += __builtin_popcountll(used);
      index = _mm512_add_epi8(index, _mm512_set1_epi8(16));
    }
  }
  out = o;
  return i;
}

// The hex digits of each byte's high and low half, from `digits` (16 characters).
VEXA_AVX512_BYTES inline void hex_digit_planes(__m512i bytes, const char* digits, __mmask64 where, __m512i& high,
                                               __m512i& low) {
  // The zero-masking form: GCC 12 warns of the plain one's undefined operand.
  const __m512i table = _mm512_maskz_broadcast_i32x4(0xffff, _mm_loadu_si128(reinterpret_cast<const __m128i*>(digits)));
  const __m512i nibble = _mm512_set1_epi8(15);
  high = _mm512_maskz_shuffle_epi8(where, table, _mm512_and_si512(_mm512_srli_epi16(bytes, 4), nibble));
  low = _mm512_maskz_shuffle_epi8(where, table, _mm512_and_si512(bytes, nibble));
}

// Looks each byte below 128 up in a table of 128 bytes; 0 for the bytes above.
VEXA_AVX512_BYTES inline __m512i lookup128(__m512i bytes, const uint8_t* table) {
  __m512i found = _mm512_permutex2var_epi8(_mm512_loadu_si512(table), bytes, _mm512_loadu_si512(table + 64));
  return _mm512_maskz_mov_epi8(~_mm512_movepi8_mask(bytes), found);
}

}  // namespace base::x86
#endif
