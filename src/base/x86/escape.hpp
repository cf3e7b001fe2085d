// C-string escaping with AVX2 or AVX-512, for CPUs that have them (base::cpu
// tells): with AVX2 the bytes that need an escape are found 32 at a time, with
// AVX-512 the codes of 64 bytes are made at once.
#pragma once

#include "base/x86/runs.hpp"

#if defined(VEXA_X86_AVX2_RUNS)
namespace base::x86 {

// The bytes outside 32 to 126 and '"' and '\', and their codes. `letters`
// holds, for each byte below 128, the letter of its named escape, or 0.
struct c_escaped {
  const uint8_t* letters;

  // All ones at the bytes escaped.
  __attribute__((target("avx2"))) __m256i escaped(__m256i c) const {
    // Below 32 as signed bytes takes in 128 to 255 too.
    return _mm256_or_si256(
        _mm256_or_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(32), c), _mm256_cmpeq_epi8(c, _mm256_set1_epi8(127))),
        own_letters(c));
  }

  // All ones at '"' and '\', the named bytes that are their own letters.
  __attribute__((target("avx2"))) static __m256i own_letters(__m256i c) {
    return _mm256_or_si256(_mm256_cmpeq_epi8(c, _mm256_set1_epi8('"')), _mm256_cmpeq_epi8(c, _mm256_set1_epi8('\\')));
  }

  __attribute__((target("avx2"))) void planes(__m256i c, __m256i escape, __m256i (&plane)[4]) const {
    // The named bytes below 16 find their letter in the table's first row.
    __m256i first_row = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(letters)));
    __m256i letter = _mm256_or_si256(
        _mm256_and_si256(_mm256_shuffle_epi8(first_row, c), _mm256_cmpgt_epi8(_mm256_set1_epi8(16), c)),
        _mm256_and_si256(c, own_letters(c)));
    __m256i hex = _mm256_andnot_si256(_mm256_cmpgt_epi8(letter, _mm256_setzero_si256()), escape);
    plane[0] = _mm256_blendv_epi8(c, _mm256_set1_epi8('\\'), escape);
    plane[1] = _mm256_blendv_epi8(letter, _mm256_set1_epi8('x'), hex);
    hex_digit_planes(c, hex_digits, hex, plane[2], plane[3]);
  }
};

// The codes as planes. `letters` holds, for each byte below 128, the letter of
// its named escape, or 0.
struct c_escape_planes {
  const uint8_t* letters;

  VEXA_AVX512_BYTES __mmask64 operator()(__m512i c, code_planes& p) const {
    __m512i letter = lookup128(c, letters);
    __mmask64 named = _mm512_test_epi8_mask(letter, letter);
    __mmask64 outside =
        _mm512_cmplt_epu8_mask(c, _mm512_set1_epi8(32)) | _mm512_cmpge_epu8_mask(c, _mm512_set1_epi8(127));
    __mmask64 hex = outside & ~named;
    p.plane[0] = _mm512_mask_blend_epi8(hex | named, c, _mm512_set1_epi8('\\'));
    p.plane[1] = _mm512_mask_mov_epi8(letter, hex, _mm512_set1_epi8('x'));
    hex_digit_planes(c, hex_digits, hex, p.plane[2], p.plane[3]);
    return hex | named;
  }
};

}  // namespace base::x86
#endif
