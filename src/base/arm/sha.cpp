// SHA-1 and SHA-256 block compression through the ARMv8 cryptography
// instructions: the same state words as the portable rounds. The vector loads
// assume little-endian lanes, as on every arm64 Linux.
#include <arm_neon.h>

#include "base/kernels.hpp"
#include "base/sha_constants.hpp"

namespace base::arm {

namespace {

// Reads 16 message bytes as four big-endian words.
uint32x4_t load_be32x4(const unsigned char* p) {
  return vreinterpretq_u32_u8(vrev32q_u8(vld1q_u8(p)));
}

}  // namespace

// The instructions hold the state as the words A to D in one vector and E in a
// scalar, and do four steps at a time with message words plus constant.
void sha1_blocks_armv8(const unsigned char* p, std::size_t count, uint32_t* state) {
  uint32x4_t abcd = vld1q_u32(state);
  uint32_t e = state[4];
  for (std::size_t block = 0; block < count; ++block, p += 64) {
    uint32x4_t abcd_in = abcd;
    uint32_t e_in = e;
    uint32x4_t w[4];  // schedule words 4q to 4q+3 in w[q % 4]
    for (int i = 0; i < 4; ++i) w[i] = load_be32x4(p + 16 * i);
    // Steps 4q to 4q+3 at a time; E four steps on is A now, rotated.
#pragma GCC unroll 20
    for (int q = 0; q < 20; ++q) {
      if (q >= 4)
        w[q & 3] = vsha1su1q_u32(vsha1su0q_u32(w[q & 3], w[(q + 1) & 3], w[(q + 2) & 3]), w[(q + 3) & 3]);
      uint32x4_t wk = vaddq_u32(w[q & 3], vdupq_n_u32(sha1_k[q / 5]));
      uint32_t e_next = vsha1h_u32(vgetq_lane_u32(abcd, 0));
      if (q < 5)
        abcd = vsha1cq_u32(abcd, e, wk);  // Ch
      else if (q < 10 || q >= 15)
        abcd = vsha1pq_u32(abcd, e, wk);  // Parity
      else
        abcd = vsha1mq_u32(abcd, e, wk);  // Maj
      e = e_next;
    }
    abcd = vaddq_u32(abcd, abcd_in);
    e += e_in;
  }
  vst1q_u32(state, abcd);
  state[4] = e;
}

// The instructions hold the state as the words A to D and E to H in two vectors
// and do four rounds at a time with message words plus constants.
void sha256_blocks_armv8(const unsigned char* p, std::size_t count, uint32_t* state) {
  uint32x4_t abcd = vld1q_u32(state), efgh = vld1q_u32(state + 4);
  for (std::size_t block = 0; block < count; ++block, p += 64) {
    uint32x4_t abcd_in = abcd, efgh_in = efgh;
    uint32x4_t w[4];  // schedule words 4q to 4q+3 in w[q % 4]
    for (int i = 0; i < 4; ++i) w[i] = load_be32x4(p + 16 * i);
#pragma GCC unroll 16
    for (int q = 0; q < 16; ++q) {
      if (q >= 4)
        w[q & 3] = vsha256su1q_u32(vsha256su0q_u32(w[q & 3], w[(q + 1) & 3]), w[(q + 2) & 3], w[(q + 3) & 3]);
      uint32x4_t wk = vaddq_u32(w[q & 3], vld1q_u32(sha256_k + 4 * q));
      uint32x4_t abcd_before = abcd;
      abcd = vsha256hq_u32(abcd, efgh, wk);
      efgh = vsha256h2q_u32(efgh, abcd_before, wk);
    }
    abcd = vaddq_u32(abcd, abcd_in);
    efgh = vaddq_u32(efgh, efgh_in);
  }
  vst1q_u32(state, abcd);
  vst1q_u32(state + 4, efgh);
}

}  // namespace base::arm
