// Base64 decoding with AVX-512 (BW, VBMI), 64 characters to 48 bytes a step:
// one two-vector byte permute looks every character up at once. Like the AVX2
// kernel it stops at a piece that is not plain alphabet and leaves that piece,
// and the rest, to the portable code.
#include <immintrin.h>

#include "base/base64.hpp"
#include "base/kernels.hpp"

namespace base::x86 {

namespace {

// A lookup table indexed by a byte below 128 that holds its value in the
// alphabet, or 0x80 for an invalid character; the two halves of 64 bytes go to
// the byte permute as its two vectors.
struct value_table {
  alignas(64) unsigned char value[128];
};

const value_table& values() {
  static const value_table table = [] {
    value_table t;
    for (unsigned char& v : t.value) v = 0x80;
    for (int v = 0; v < 64; ++v)
      t.value[static_cast<unsigned char>(base64_alphabet[v])] = static_cast<unsigned char>(v);
    return t;
  }();
  return table;
}

}  // namespace

std::size_t unbase64_pieces_avx512(const unsigned char* in, std::size_t pieces, char* out) {
  const value_table& table = values();
  const __m512i low = _mm512_load_si512(table.value), high = _mm512_load_si512(table.value + 64);
  // A lookup table indexed by output byte j (below 48) that holds the byte of
  // the 32-bit lanes to take: group j / 3's 24 bits, high byte first.
  alignas(64) unsigned char order[64] = {};
  for (int j = 0; j < 48; ++j) order[j] = static_cast<unsigned char>(4 * (j / 3) + 2 - j % 3);
  const __m512i pack = _mm512_load_si512(order);
  std::size_t done = 0;
  for (; done < pieces; ++done, in += 64, out += 48) {
    __m512i c = _mm512_loadu_si512(in);
    __m512i v = _mm512_permutex2var_epi8(low, c, high);
    // Bytes from 128 up, and invalid characters below, have the top bit set.
    if (_mm512_movepi8_mask(_mm512_or_si512(v, c))) break;
    // Pairs of values to 12 bits, pairs of those to the group's 24 bits.
    __m512i pairs = _mm512_maddubs_epi16(v, _mm512_set1_epi32(0x01400140));
    __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
    // The zero-masking form: GCC 12 warns of the plain one's undefined operand.
    const __mmask64 bytes48 = 0x0000ffffffffffffull;
    _mm512_mask_storeu_epi8(out, bytes48, _mm512_maskz_permutexvar_epi8(bytes48, pack, groups));
  }
  return done;
}

}  // namespace base::x86
