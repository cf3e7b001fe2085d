// The portable block compression of MD5 (RFC 1321).

#include "base/digest.hpp"

namespace base {

void md5_blocks_portable(const unsigned char* p, std::size_t count, uint32_t* state) {
  // A lookup table indexed by step k (0 to 63) that holds its constant,
  // floor(2^32 * |sin(k + 1)|).
  static const uint32_t T[64] = {
      0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
      0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
      0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
      0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
      0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
      0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
      0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
      0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};
  // A lookup table indexed by round and step mod 4 that holds the step's left
  // rotation: a round's four amounts repeat over its 16 steps.
  static const int shift[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

  for (; count > 0; --count, p += 64) {
    uint32_t x[16];
    for (int i = 0; i < 16; ++i) x[i] = read_le32(p + 4 * i);
    uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    // Step k (0 to 63) with f, the value of its round's function of b, c and d.
    auto step = [&](uint32_t f, int k, int word) {
      uint32_t next = b + rotl32(a + T[k] + x[word] + f, shift[k / 16][k % 4]);
      a = d;
      d = c;
      c = b;
      b = next;
    };
    // The round functions are written so that b, the word just made, meets at
    // most two operations: the rest is ready before it. In G the two terms share
    // no set bit, so adding them equals or-ing them. Unrolled by the compiler,
    // each step's shift and word index become constants.
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) step(d ^ (b & (c ^ d)), i, i);
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) step((c & ~d) + (b & d), 16 + i, (5 * i + 1) % 16);
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) step((c ^ d) ^ b, 32 + i, (3 * i + 5) % 16);
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) step(c ^ (b | ~d), 48 + i, 7 * i % 16);
    add_words(state, {a, b, c, d});
  }
}

}  // namespace base
