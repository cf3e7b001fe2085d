// The portable block compression of SHA-256 (FIPS 180-4).

#include "base/digest.hpp"

#include "base/sha_constants.hpp"

namespace base {

void sha256_blocks_portable(const unsigned char* p, std::size_t count, uint32_t* state) {
  for (; count > 0; --count, p += 64) {
    uint32_t w[64];
    for (int t = 0; t < 16; ++t) w[t] = read_be32(p + 4 * t);
    for (int t = 16; t < 64; ++t) {
      uint32_t s0 = rotr32(w[t - 15], 7) ^ rotr32(w[t - 15], 18) ^ (w[t - 15] >> 3);
      uint32_t s1 = rotr32(w[t - 2], 17) ^ rotr32(w[t - 2], 19) ^ (w[t - 2] >> 10);
      w[t] = s1 + w[t - 7] + s0 + w[t - 16];
    }
    uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    uint32_t e = state[4], f = state[5], g = state[6], h = state[7];
    // Unrolled by the compiler, the moves below vanish: each round renames.
#pragma GCC unroll 64
    for (int t = 0; t < 64; ++t) {
      uint32_t t1 = h + (rotr32(e, 6) ^ rotr32(e, 11) ^ rotr32(e, 25)) + ((e & f) ^ (~e & g)) + sha256_k[t] + w[t];
      uint32_t t2 = (rotr32(a, 2) ^ rotr32(a, 13) ^ rotr32(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
      h = g;
      g = f;
      f = e;
      e = d + t1;
      d = c;
      c = b;
      b = a;
      a = t1 + t2;
    }
    add_words(state, {a, b, c, d, e, f, g, h});
  }
}

}  // namespace base
