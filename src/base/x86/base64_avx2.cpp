// Base64 with AVX2, 24 bytes to 32 characters a step. Both kernels take whole
// pieces only and leave the rest, and every piece that is not plain alphabet,
// to the portable code, which is the reference for what any text decodes to.
#include <immintrin.h>

#include "base/kernels.hpp"

namespace base::x86 {

// Each half of a step loads 16 bytes for its 12.
std::size_t base64_encode_avx2(const unsigned char* in, std::size_t n, char* out) {
  // Each group b0 b1 b2 as the 32-bit word b1 b0 b2 b1 (low byte first), from
  // which multiplications move the four 6-bit values into their own bytes.
  const __m256i arrange = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                           1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
  // A lookup table (in each 128-bit lane) indexed as made below, 0 for the
  // values 26-51, 1-12 for 52-63, 13 for 0-25, that holds what to add to the
  // value to make its character.
  const __m256i offsets = _mm256_setr_epi8(71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0,  //
                                           71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0);
  std::size_t i = 0;
  for (; i + 32 <= n; i += 24, out += 32) {
    __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
    __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i + 12));
    __m256i words = _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1), arrange);
    __m256i first_third = _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0fc0fc00)),
                                             _mm256_set1_epi32(0x04000040));
    __m256i second_fourth = _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003f03f0)),
                                               _mm256_set1_epi32(0x01000010));
    __m256i values = _mm256_or_si256(first_third, second_fourth);
    __m256i index = _mm256_subs_epu8(values, _mm256_set1_epi8(51));
    __m256i below_26 = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
    index = _mm256_or_si256(index, _mm256_and_si256(below_26, _mm256_set1_epi8(13)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out),
                        _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, index)));
  }
  return i;
}

namespace {

// The bytes of c that lie in [low, high], as 0xff.
__m256i in_range(__m256i c, char low, char high) {
  return _mm256_and_si256(_mm256_cmpgt_epi8(c, _mm256_set1_epi8(static_cast<char>(low - 1))),
                          _mm256_cmpgt_epi8(_mm256_set1_epi8(static_cast<char>(high + 1)), c));
}

}  // namespace

std::size_t unbase64_pieces_avx2(const unsigned char* in, std::size_t pieces, char* out) {
  // The 24-bit value of each group, low byte first, turned into its three bytes.
  const __m256i bytes_of_groups = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                                   2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  std::size_t done = 0;
  for (; done < pieces; ++done, in += 32, out += 24) {
    __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    __m256i upper = in_range(c, 'A', 'Z'), lower = in_range(c, 'a', 'z'), digit = in_range(c, '0', '9');
    __m256i plus = _mm256_cmpeq_epi8(c, _mm256_set1_epi8('+')), slash = _mm256_cmpeq_epi8(c, _mm256_set1_epi8('/'));
    __m256i valid = _mm256_or_si256(_mm256_or_si256(upper, lower), _mm256_or_si256(digit, _mm256_or_si256(plus, slash)));
    if (_mm256_movemask_epi8(valid) != -1) break;
    __m256i shift = _mm256_or_si256(
        _mm256_or_si256(_mm256_and_si256(upper, _mm256_set1_epi8(-65)), _mm256_and_si256(lower, _mm256_set1_epi8(-71))),
        _mm256_or_si256(_mm256_and_si256(digit, _mm256_set1_epi8(4)),
                        _mm256_or_si256(_mm256_and_si256(plus, _mm256_set1_epi8(19)),
                                        _mm256_and_si256(slash, _mm256_set1_epi8(16)))));
    __m256i values = _mm256_add_epi8(c, shift);
    // Pairs of values to 12 bits, pairs of those to the group's 24 bits.
    __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, bytes_of_groups),
                                                _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(bytes));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), _mm256_extracti128_si256(bytes, 1));
  }
  return done;
}

}  // namespace base::x86
