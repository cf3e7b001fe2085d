// escape and url_encode with AVX-512 (BW, VBMI, VBMI2): the codes of 64 bytes
// are made at once, as four vectors (lane i of vector k holds character k of
// byte i's code, 0 where the code is shorter), interleaved and the unused
// places packed out.
#include <immintrin.h>

#include "base/kernels.hpp"

namespace base::x86 {

namespace {

// The hex digits of each byte's high and low half, from `digits` (16 characters).
void hex_digit_lanes(__m512i bytes, const char* digits, __mmask64 where, __m512i& high, __m512i& low) {
  // The zero-masking form: GCC 12 warns of the plain one's undefined operand.
  const __m512i table = _mm512_maskz_broadcast_i32x4(0xffff, _mm_loadu_si128(reinterpret_cast<const __m128i*>(digits)));
  const __m512i nibble = _mm512_set1_epi8(15);
  high = _mm512_maskz_shuffle_epi8(where, table, _mm512_and_si512(_mm512_srli_epi16(bytes, 4), nibble));
  low = _mm512_maskz_shuffle_epi8(where, table, _mm512_and_si512(bytes, nibble));
}

// Looks each byte below 128 up in a lookup table of 128 bytes; 0 for the bytes above.
__m512i lookup128(__m512i bytes, const uint8_t* table) {
  __m512i found = _mm512_permutex2var_epi8(_mm512_loadu_si512(table), bytes, _mm512_loadu_si512(table + 64));
  return _mm512_maskz_mov_epi8(~_mm512_movepi8_mask(bytes), found);
}

// The codes of escape; returns the mask of the bytes escaped.
__mmask64 c_escape_codes(__m512i c, const byte_codes& codes, __m512i (&code)[4]) {
  __m512i letter = lookup128(c, codes.letters);
  __mmask64 named = _mm512_test_epi8_mask(letter, letter);
  __mmask64 outside =
      _mm512_cmplt_epu8_mask(c, _mm512_set1_epi8(32)) | _mm512_cmpge_epu8_mask(c, _mm512_set1_epi8(127));
  __mmask64 hex = outside & ~named;
  code[0] = _mm512_mask_blend_epi8(hex | named, c, _mm512_set1_epi8('\\'));
  code[1] = _mm512_mask_mov_epi8(letter, hex, _mm512_set1_epi8('x'));
  hex_digit_lanes(c, "0123456789abcdef", hex, code[2], code[3]);
  return hex | named;
}

// The codes of url_encode; returns the mask of the bytes escaped.
__mmask64 url_codes(__m512i c, const byte_codes& codes, __m512i (&code)[4]) {
  __mmask64 escaped = ~_mm512_cmpeq_epi8_mask(lookup128(c, codes.size), _mm512_set1_epi8(1));
  code[0] = _mm512_mask_blend_epi8(escaped, c, _mm512_set1_epi8('%'));
  hex_digit_lanes(c, "0123456789ABCDEF", escaped, code[1], code[2]);
  code[3] = _mm512_setzero_si512();
  return escaped;
}

// The codes in the style of `codes`; returns the mask of the bytes escaped.
__mmask64 make_codes(__m512i c, const byte_codes& codes, __m512i (&code)[4]) {
  return codes.kind == byte_codes::c_string ? c_escape_codes(c, codes, code) : url_codes(c, codes, code);
}

}  // namespace

// Encodes while 64 bytes remain. Each group of 16 bytes is written as the 64
// places of its codes with the zeros packed out; `out` has room for 4
// characters a byte, so the whole stores stay inside it.
std::size_t encode_bytes_avx512(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes) {
  // A lookup table indexed by place in the output, 4i + k, that holds the lane
  // to take: byte i of code vector k, even k from the first of two vectors
  // (index below 64), odd k from the second.
  alignas(64) static const uint8_t pairs[64] = {
      0,  64, 0,  64, 1,  65, 1,  65, 2,  66, 2,  66, 3,  67, 3,  67, 4,  68, 4,  68, 5,  69,
      5,  69, 6,  70, 6,  70, 7,  71, 7,  71, 8,  72, 8,  72, 9,  73, 9,  73, 10, 74, 10, 74,
      11, 75, 11, 75, 12, 76, 12, 76, 13, 77, 13, 77, 14, 78, 14, 78, 15, 79, 15, 79};
  const __mmask64 from_vectors_2_and_3 = 0xccccccccccccccccull;
  std::size_t i = 0;
  char* o = out;
  for (; i + 64 <= n; i += 64) {
    __m512i bytes = _mm512_loadu_si512(in + i);
    __m512i code[4];
    if (!make_codes(bytes, codes, code)) {
      _mm512_storeu_si512(o, bytes);
      o += 64;
      continue;
    }
    __m512i index = _mm512_load_si512(pairs);
    for (int group = 0; group < 4; ++group) {
      __m512i text = _mm512_mask_blend_epi8(from_vectors_2_and_3, _mm512_permutex2var_epi8(code[0], index, code[1]),
                                            _mm512_permutex2var_epi8(code[2], index, code[3]));
      __mmask64 used = _mm512_test_epi8_mask(text, text);
      _mm512_storeu_si512(o, _mm512_maskz_compress_epi8(used, text));
      o += __builtin_popcountll(used);
      index = _mm512_add_epi8(index, _mm512_set1_epi8(16));
    }
  }
  out = o;
  return i;
}


}  // namespace base::x86
