// The portable block compression of SHA-1 (FIPS 180-4).

#include "base/digest.hpp"

#include "base/sha_constants.hpp"

namespace base {

void sha1_blocks_portable(const unsigned char* p, std::size_t count, uint32_t* state) {
  for (; count > 0; --count, p += 64) {
    uint32_t w[80];
    for (int t = 0; t < 16; ++t) w[t] = read_be32(p + 4 * t);
    // w[t-3] is carried in w3, w2, w1: as a plain array loop the compiler
    // vectorises this into loads overlapping the stores just made, which stall
    // and cost half the digest's speed.
    uint32_t w3 = w[13], w2 = w[14], w1 = w[15];
    for (int t = 16; t < 80; ++t) {
      w[t] = rotl32(w3 ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
      w3 = w2;
      w2 = w1;
      w1 = w[t];
    }
    uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4];
    auto step = [&](uint32_t f, uint32_t k, uint32_t word) {
      uint32_t next = rotl32(a, 5) + f + e + k + word;
      e = d;
      d = c;
      c = rotl32(b, 30);
      b = a;
      a = next;
    };
    // Unrolled by the compiler, the step loops keep a..e in registers with no moves.
#pragma GCC unroll 20
    for (int t = 0; t < 20; ++t) step((b & c) ^ (~b & d), sha1_k[0], w[t]);       // Ch
#pragma GCC unroll 20
    for (int t = 20; t < 40; ++t) step(b ^ c ^ d, sha1_k[1], w[t]);                // Parity
#pragma GCC unroll 20
    for (int t = 40; t < 60; ++t) step((b & c) ^ (b & d) ^ (c & d), sha1_k[2], w[t]);  // Maj
#pragma GCC unroll 20
    for (int t = 60; t < 80; ++t) step(b ^ c ^ d, sha1_k[3], w[t]);                // Parity
    add_words(state, {a, b, c, d, e});
  }
}

}  // namespace base
