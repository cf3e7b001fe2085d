// SHA-1 and SHA-256 block compression through the x86-64 SHA extensions:
// several times the portable rounds' speed, the same state words.
#include <immintrin.h>

#include "base/sha_constants.hpp"
#include "base/kernels.hpp"

namespace base::x86 {

namespace {

// Groups `first` to `first` + 4 of a SHA-1 block, four rounds each, all with the
// round function F. w[g % 4] holds the schedule words 4g to 4g+3, first word in
// the top lane; `prev` is a..d as it was before the latest group, whose a,
// rotated, is the next group's e, which sha1nexte adds to that group's words.
template <int F>
void sha1_groups(int first, __m128i* w, __m128i& abcd, __m128i& prev, __m128i e) {
#pragma GCC unroll 5
  for (int g = first; g < first + 5; ++g) {
    if (g >= 4)
      w[g & 3] = _mm_sha1msg2_epu32(
          _mm_xor_si128(_mm_sha1msg1_epu32(w[g & 3], w[(g + 1) & 3]), w[(g + 2) & 3]), w[(g + 3) & 3]);
    __m128i words = g == 0 ? _mm_add_epi32(e, w[0]) : _mm_sha1nexte_epu32(prev, w[g & 3]);
    prev = abcd;
    abcd = _mm_sha1rnds4_epu32(abcd, words, F);
  }
}

}  // namespace

void sha1_blocks_sha_ni(const unsigned char* p, std::size_t count, uint32_t* state) {
  // Reverses all sixteen bytes: each word turns big-endian and the first word
  // lands in the top lane, where the instructions want it.
  const __m128i reverse = _mm_set_epi64x(0x0001020304050607LL, 0x08090a0b0c0d0e0fLL);
  __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0x1b);
  __m128i e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
  for (; count > 0; --count, p += 64) {
    __m128i abcd_in = abcd, prev = abcd;
    __m128i w[4];
    for (int i = 0; i < 4; ++i)
      w[i] = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * i)), reverse);
    sha1_groups<0>(0, w, abcd, prev, e);
    sha1_groups<1>(5, w, abcd, prev, e);
    sha1_groups<2>(10, w, abcd, prev, e);
    sha1_groups<3>(15, w, abcd, prev, e);
    e = _mm_sha1nexte_epu32(prev, e);
    abcd = _mm_add_epi32(abcd, abcd_in);
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1b));
  state[4] = static_cast<uint32_t>(_mm_extract_epi32(e, 3));
}

// The instructions hold the state as the word pairs ABEF and CDGH and do two rounds
// each, with message words plus constants four at a time.
void sha256_blocks_sha_ni(const unsigned char* p, std::size_t count, uint32_t* state) {
  // Reverses the bytes of each 32-bit lane: message words are big-endian.
  const __m128i big_endian = _mm_set_epi64x(0x0c0d0e0f08090a0bLL, 0x0405060700010203LL);
  __m128i dcba = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state));
  __m128i hgfe = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state + 4));
  __m128i cdab = _mm_shuffle_epi32(dcba, 0xb1);
  __m128i efgh = _mm_shuffle_epi32(hgfe, 0x1b);
  __m128i abef = _mm_alignr_epi8(cdab, efgh, 8);
  __m128i cdgh = _mm_blend_epi16(efgh, cdab, 0xf0);
  for (std::size_t block = 0; block < count; ++block, p += 64) {
    __m128i abef_in = abef, cdgh_in = cdgh;
    __m128i w[4];  // schedule words 4q to 4q+3 in w[q % 4]
    for (int i = 0; i < 4; ++i)
      w[i] = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * i)), big_endian);
    for (int q = 0; q < 16; ++q) {
      if (q >= 4) {
        __m128i sum = _mm_add_epi32(_mm_sha256msg1_epu32(w[q & 3], w[(q + 1) & 3]),
                                    _mm_alignr_epi8(w[(q + 3) & 3], w[(q + 2) & 3], 4));
        w[q & 3] = _mm_sha256msg2_epu32(sum, w[(q + 3) & 3]);
      }
      __m128i wk = _mm_add_epi32(w[q & 3], _mm_load_si128(reinterpret_cast<const __m128i*>(sha256_k + 4 * q)));
      cdgh = _mm_sha256rnds2_epu32(cdgh, abef, wk);
      abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(wk, 0x0e));
    }
    abef = _mm_add_epi32(abef, abef_in);
    cdgh = _mm_add_epi32(cdgh, cdgh_in);
  }
  __m128i feba = _mm_shuffle_epi32(abef, 0x1b);
  __m128i dchg = _mm_shuffle_epi32(cdgh, 0xb1);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_blend_epi16(feba, dchg, 0xf0));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state + 4), _mm_alignr_epi8(dchg, feba, 8));
}

}  // namespace base::x86
