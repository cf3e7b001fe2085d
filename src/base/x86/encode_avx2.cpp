// escape and url_encode with AVX2: 32 bytes are tested at once and the runs
// between the bytes that change are copied whole, or, where many change, the
// codes of all 32 are made at once and shuffled into place four bytes at a time.
// The codes of 32 bytes are made as four vectors: lane i of vector k holds
// character k of byte i's code, 0 where the code is shorter.
#include <immintrin.h>

#include <cstring>

#include "base/kernels.hpp"

namespace base::x86 {

namespace {

void copy32(char* to, const unsigned char* from) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
}

// A lookup table indexed by the sizes of the codes of four bytes, two bits a
// byte (size - 1, byte i at bits 2i), that holds the shuffle putting their codes
// in a row (the lanes of the group's four code vectors to take, character k of
// byte i at lane 4k + i) and the count of characters.
struct group_shuffles {
  alignas(16) uint8_t take[256][16];
  uint8_t size[256];
};

const group_shuffles& shuffles() {
  static const group_shuffles table = [] {
    group_shuffles t{};
    for (int sizes = 0; sizes < 256; ++sizes) {
      int lane = 0;
      for (int i = 0; i < 4; ++i)
        for (int k = 0; k <= (sizes >> 2 * i & 3); ++k) t.take[sizes][lane++] = static_cast<uint8_t>(4 * k + i);
      t.size[sizes] = static_cast<uint8_t>(lane);
    }
    return t;
  }();
  return table;
}

// Writes the codes of 32 bytes (no code has a zero byte) and returns the end of
// them. Every store is 16 bytes, the places past a group's codes written over
// by the next group.
char* write_codes(const __m256i (&code)[4], char* o, const group_shuffles& s) {
  const __m256i zero = _mm256_setzero_si256();
  // Each byte's size less one is 3 less one for each vector from the second that is 0 there.
  __m256i less_one =
      _mm256_add_epi8(_mm256_add_epi8(_mm256_cmpeq_epi8(code[1], zero), _mm256_cmpeq_epi8(code[2], zero)),
                      _mm256_add_epi8(_mm256_cmpeq_epi8(code[3], zero), _mm256_set1_epi8(3)));
  // Of each group of four, l0 + 4 l1 + 16 l2 + 64 l3: groups 0 to 3 in the low half, 4 to 7 in the high.
  alignas(32) uint32_t sizes[8];
  _mm256_store_si256(reinterpret_cast<__m256i*>(sizes),
                     _mm256_madd_epi16(_mm256_maddubs_epi16(less_one, _mm256_set1_epi16(0x0401)),
                                       _mm256_set1_epi32(0x00100001)));
  // Four lanes of each vector side by side: group k in the low half, group k + 4 in the high.
  __m256i a = _mm256_unpacklo_epi32(code[0], code[1]), b = _mm256_unpackhi_epi32(code[0], code[1]);
  __m256i c = _mm256_unpacklo_epi32(code[2], code[3]), d = _mm256_unpackhi_epi32(code[2], code[3]);
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
void hex_digit_lanes(__m256i bytes, const char* digits, __m256i where, __m256i& high, __m256i& low) {
  const __m256i table = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(digits)));
  const __m256i nibble = _mm256_set1_epi8(15);
  high = _mm256_and_si256(where, _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi16(bytes, 4), nibble)));
  low = _mm256_and_si256(where, _mm256_shuffle_epi8(table, _mm256_and_si256(bytes, nibble)));
}

// All ones at the bytes whose code is not the byte itself: byte c is kept where
// bit c >> 4 of kept_rows[c & 15] is set (from 128 up, c >> 4 finds no bit).
__m256i changed(__m256i c, __m128i kept_rows) {
  const __m256i low = _mm256_set1_epi8(15);
  // A lookup table (in each 128-bit lane) indexed by h, c >> 4, that holds the
  // bit of kept_rows for byte c: 1 << h below 8, none above.
  const __m256i bit = _mm256_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                       1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
  __m256i row = _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(kept_rows), _mm256_and_si256(c, low));
  __m256i mine = _mm256_shuffle_epi8(bit, _mm256_and_si256(_mm256_srli_epi16(c, 4), low));
  return _mm256_cmpeq_epi8(_mm256_and_si256(row, mine), _mm256_setzero_si256());
}

// The codes of escape: a backslash and the letter of a named escape ('"' and
// '\' are their own letters, the others lie below 16), or a backslash, x and
// two lowercase digits.
void c_escape_codes(__m256i c, __m256i escape, const byte_codes& codes, __m256i (&code)[4]) {
  __m256i first_row = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(codes.letters)));
  __m256i own =
      _mm256_or_si256(_mm256_cmpeq_epi8(c, _mm256_set1_epi8('"')), _mm256_cmpeq_epi8(c, _mm256_set1_epi8('\\')));
  __m256i letter = _mm256_or_si256(
      _mm256_and_si256(_mm256_shuffle_epi8(first_row, c), _mm256_cmpgt_epi8(_mm256_set1_epi8(16), c)),
      _mm256_and_si256(c, own));
  __m256i hex = _mm256_andnot_si256(_mm256_cmpgt_epi8(letter, _mm256_setzero_si256()), escape);
  code[0] = _mm256_blendv_epi8(c, _mm256_set1_epi8('\\'), escape);
  code[1] = _mm256_blendv_epi8(letter, _mm256_set1_epi8('x'), hex);
  hex_digit_lanes(c, "0123456789abcdef", hex, code[2], code[3]);
}

// The codes of url_encode: "%" and two uppercase digits.
void url_codes(__m256i c, __m256i escape, const byte_codes&, __m256i (&code)[4]) {
  code[0] = _mm256_blendv_epi8(c, _mm256_set1_epi8('%'), escape);
  hex_digit_lanes(c, "0123456789ABCDEF", escape, code[1], code[2]);
  code[3] = _mm256_setzero_si256();
}

// The codes of the bytes changed, in the style of `codes`.
void make_codes(__m256i c, __m256i escape, const byte_codes& codes, __m256i (&code)[4]) {
  if (codes.kind == byte_codes::c_string) c_escape_codes(c, escape, codes, code);
  else url_codes(c, escape, codes, code);
}

}  // namespace

// Encodes while 64 bytes remain (a run is copied 32 bytes at a time from where
// it starts, so that many more must be there to read). The whole stores, whose tails are written over
// next, stay inside `out`, which has room for 4 characters a byte.
std::size_t encode_bytes_avx2(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes) {
  // Past this many changed bytes in 32 the codes of all cost less than the runs
  // (binary data, or text with blanks escaped); measured here with 2 to 12.
  const int dense = 4;
  const group_shuffles& groups = shuffles();
  const __m128i kept_rows = _mm_loadu_si128(reinterpret_cast<const __m128i*>(codes.kept_rows));
  std::size_t i = 0;
  char* o = out;
  for (; i + 64 <= n; i += 32) {
    __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    __m256i escaped = changed(bytes, kept_rows);
    uint32_t mask = static_cast<uint32_t>(_mm256_movemask_epi8(escaped));
    if (mask == 0) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), bytes);
      o += 32;
    } else if (__builtin_popcount(mask) > dense) {
      __m256i code[4];
      make_codes(bytes, escaped, codes, code);
      o = write_codes(code, o, groups);
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
