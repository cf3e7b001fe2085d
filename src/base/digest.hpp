// MD5 (RFC 1321), SHA-1 and SHA-256 (FIPS 180-4), as contexts that take the bytes
// in any number of pieces (start, add, finish) and as functions of one string.
// Each returns the raw digest bytes; base::hex turns them into text.
//
// Every algorithm compresses whole 64-byte blocks through one function of the
// shape `void X_blocks_<variant>(const unsigned char* p, size_t count, uint32_t*
// state)`: the portable rounds and, where the CPU has them, its SHA instructions.
// sha1_blocks and sha256_blocks pick the variant once, at the first call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "base/digest_arm.hpp"
#include "base/sha_constants.hpp"

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace base {

inline uint32_t rotl32(uint32_t x, int n) { return (x << n) | (x >> (32 - n)); }
inline uint32_t rotr32(uint32_t x, int n) { return (x >> n) | (x << (32 - n)); }

// Words are assembled from single bytes, so the result does not depend on the
// machine's byte order or on the alignment of the buffer.
inline uint32_t read_le32(const unsigned char* p) {
  return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
inline uint32_t read_be32(const unsigned char* p) {
  return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | uint32_t(p[3]);
}
inline void append_le32(std::string& out, uint32_t x) {
  for (int i = 0; i < 32; i += 8) out += char(x >> i & 0xff);
}
inline void append_be32(std::string& out, uint32_t x) {
  for (int i = 24; i >= 0; i -= 8) out += char(x >> i & 0xff);
}

using block_function = void (*)(const unsigned char* p, std::size_t count, uint32_t* state);

inline void md5_blocks(const unsigned char* p, std::size_t count, uint32_t* state) {
  // T[k] = floor(2^32 * |sin(k + 1)|).
  static const uint32_t T[64] = {
      0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
      0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
      0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
      0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
      0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
      0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
      0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
      0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};
  // Left rotations of each round; a round's four amounts repeat over its 16 steps.
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
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
  }
}

inline void sha1_blocks_portable(const unsigned char* p, std::size_t count, uint32_t* state) {
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
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
    state[4] += e;
  }
}

inline void sha256_blocks_portable(const unsigned char* p, std::size_t count, uint32_t* state) {
  struct local {
    // One round. The caller rotates the roles of a..h instead of moving the
    // values: the variable updated as h is the next round's a, the one updated as d
    // its e.
    static void P(unsigned a, unsigned b, unsigned c, unsigned& d, unsigned e, unsigned f, unsigned g,
                  unsigned& h, unsigned x, unsigned K) {
      unsigned t1 = h + (rotr32(e, 6) ^ rotr32(e, 11) ^ rotr32(e, 25)) + ((e & f) ^ (~e & g)) + K + x;
      unsigned t2 = (rotr32(a, 2) ^ rotr32(a, 13) ^ rotr32(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
      d += t1;
      h = t1 + t2;
    }

    // Compresses the 64-byte block at `block` into the eight words at `state`.
    // Rounds are written out so that each constant is an immediate and each
    // schedule word is made right before the round that reads it.
    static void process(const unsigned char* block, unsigned* state) {
      unsigned w[64];
      for (int t = 0; t < 16; ++t) w[t] = read_be32(block + 4 * t);
      auto W = [&w](int t) {
        unsigned s0 = rotr32(w[t - 15], 7) ^ rotr32(w[t - 15], 18) ^ (w[t - 15] >> 3);
        unsigned s1 = rotr32(w[t - 2], 17) ^ rotr32(w[t - 2], 19) ^ (w[t - 2] >> 10);
        return w[t] = s1 + w[t - 7] + s0 + w[t - 16];
      };
      unsigned a = state[0], b = state[1], c = state[2], d = state[3];
      unsigned e = state[4], f = state[5], g = state[6], h = state[7];

      P(a, b, c, d, e, f, g, h, w[0],  0x428a2f98);
      P(h, a, b, c, d, e, f, g, w[1],  0x71374491);
      P(g, h, a, b, c, d, e, f, w[2],  0xb5c0fbcf);
      P(f, g, h, a, b, c, d, e, w[3],  0xe9b5dba5);
      P(e, f, g, h, a, b, c, d, w[4],  0x3956c25b);
      P(d, e, f, g, h, a, b, c, w[5],  0x59f111f1);
      P(c, d, e, f, g, h, a, b, w[6],  0x923f82a4);
      P(b, c, d, e, f, g, h, a, w[7],  0xab1c5ed5);

      P(a, b, c, d, e, f, g, h, w[8],  0xd807aa98);
      P(h, a, b, c, d, e, f, g, w[9],  0x12835b01);
      P(g, h, a, b, c, d, e, f, w[10], 0x243185be);
      P(f, g, h, a, b, c, d, e, w[11], 0x550c7dc3);
      P(e, f, g, h, a, b, c, d, w[12], 0x72be5d74);
      P(d, e, f, g, h, a, b, c, w[13], 0x80deb1fe);
      P(c, d, e, f, g, h, a, b, w[14], 0x9bdc06a7);
      P(b, c, d, e, f, g, h, a, w[15], 0xc19bf174);

      P(a, b, c, d, e, f, g, h, W(16), 0xe49b69c1);
      P(h, a, b, c, d, e, f, g, W(17), 0xefbe4786);
      P(g, h, a, b, c, d, e, f, W(18), 0x0fc19dc6);
      P(f, g, h, a, b, c, d, e, W(19), 0x240ca1cc);
      P(e, f, g, h, a, b, c, d, W(20), 0x2de92c6f);
      P(d, e, f, g, h, a, b, c, W(21), 0x4a7484aa);
      P(c, d, e, f, g, h, a, b, W(22), 0x5cb0a9dc);
      P(b, c, d, e, f, g, h, a, W(23), 0x76f988da);

      P(a, b, c, d, e, f, g, h, W(24), 0x983e5152);
      P(h, a, b, c, d, e, f, g, W(25), 0xa831c66d);
      P(g, h, a, b, c, d, e, f, W(26), 0xb00327c8);
      P(f, g, h, a, b, c, d, e, W(27), 0xbf597fc7);
      P(e, f, g, h, a, b, c, d, W(28), 0xc6e00bf3);
      P(d, e, f, g, h, a, b, c, W(29), 0xd5a79147);
      P(c, d, e, f, g, h, a, b, W(30), 0x06ca6351);
      P(b, c, d, e, f, g, h, a, W(31), 0x14292967);

      P(a, b, c, d, e, f, g, h, W(32), 0x27b70a85);
      P(h, a, b, c, d, e, f, g, W(33), 0x2e1b2138);
      P(g, h, a, b, c, d, e, f, W(34), 0x4d2c6dfc);
      P(f, g, h, a, b, c, d, e, W(35), 0x53380d13);
      P(e, f, g, h, a, b, c, d, W(36), 0x650a7354);
      P(d, e, f, g, h, a, b, c, W(37), 0x766a0abb);
      P(c, d, e, f, g, h, a, b, W(38), 0x81c2c92e);
      P(b, c, d, e, f, g, h, a, W(39), 0x92722c85);

      P(a, b, c, d, e, f, g, h, W(40), 0xa2bfe8a1);
      P(h, a, b, c, d, e, f, g, W(41), 0xa81a664b);
      P(g, h, a, b, c, d, e, f, W(42), 0xc24b8b70);
      P(f, g, h, a, b, c, d, e, W(43), 0xc76c51a3);
      P(e, f, g, h, a, b, c, d, W(44), 0xd192e819);
      P(d, e, f, g, h, a, b, c, W(45), 0xd6990624);
      P(c, d, e, f, g, h, a, b, W(46), 0xf40e3585);
      P(b, c, d, e, f, g, h, a, W(47), 0x106aa070);

      P(a, b, c, d, e, f, g, h, W(48), 0x19a4c116);
      P(h, a, b, c, d, e, f, g, W(49), 0x1e376c08);
      P(g, h, a, b, c, d, e, f, W(50), 0x2748774c);
      P(f, g, h, a, b, c, d, e, W(51), 0x34b0bcb5);
      P(e, f, g, h, a, b, c, d, W(52), 0x391c0cb3);
      P(d, e, f, g, h, a, b, c, W(53), 0x4ed8aa4a);
      P(c, d, e, f, g, h, a, b, W(54), 0x5b9cca4f);
      P(b, c, d, e, f, g, h, a, W(55), 0x682e6ff3);

      P(a, b, c, d, e, f, g, h, W(56), 0x748f82ee);
      P(h, a, b, c, d, e, f, g, W(57), 0x78a5636f);
      P(g, h, a, b, c, d, e, f, W(58), 0x84c87814);
      P(f, g, h, a, b, c, d, e, W(59), 0x8cc70208);
      P(e, f, g, h, a, b, c, d, W(60), 0x90befffa);
      P(d, e, f, g, h, a, b, c, W(61), 0xa4506ceb);
      P(c, d, e, f, g, h, a, b, W(62), 0xbef9a3f7);
      P(b, c, d, e, f, g, h, a, W(63), 0xc67178f2);

      state[0] += a;
      state[1] += b;
      state[2] += c;
      state[3] += d;
      state[4] += e;
      state[5] += f;
      state[6] += g;
      state[7] += h;
    }
  };


  for (; count > 0; --count, p += 64) local::process(p, state);
}

// SHA-1 and SHA-256 through the CPU's SHA extensions, used where the CPU has
// them: several times the portable rounds' speed. The tests run both paths
// against sha1sum and sha256sum.
#if defined(__x86_64__) && defined(__GNUC__)
inline bool sha_ni_supported() {
  unsigned a, b, c, d;
  if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & bit_SSE4_1)) return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & bit_SHA);
}

// Groups `first` to `first` + 4 of a SHA-1 block, four rounds each, all with the
// round function F. w[g % 4] holds the schedule words 4g to 4g+3, first word in
// the top lane; `prev` is a..d as it was before the latest group, whose a,
// rotated, is the next group's e, which sha1nexte adds to that group's words.
template <int F>
__attribute__((target("sha,sse4.1"))) inline void sha1_groups_ni(int first, __m128i* w, __m128i& abcd,
                                                                __m128i& prev, __m128i e) {
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

__attribute__((target("sha,sse4.1"))) inline void sha1_blocks_ni(const unsigned char* p, std::size_t count,
                                                                uint32_t* state) {
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
    sha1_groups_ni<0>(0, w, abcd, prev, e);
    sha1_groups_ni<1>(5, w, abcd, prev, e);
    sha1_groups_ni<2>(10, w, abcd, prev, e);
    sha1_groups_ni<3>(15, w, abcd, prev, e);
    e = _mm_sha1nexte_epu32(prev, e);
    abcd = _mm_add_epi32(abcd, abcd_in);
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1b));
  state[4] = static_cast<uint32_t>(_mm_extract_epi32(e, 3));
}

// Compresses `count` 64-byte blocks at `p` into the eight state words. The
// instructions hold the state as the word pairs ABEF and CDGH and do two rounds
// each, with message words plus constants four at a time.
__attribute__((target("sha,sse4.1"))) inline void sha256_blocks_ni(const unsigned char* p, std::size_t count,
                                                                  uint32_t* state) {
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
#endif

// The compressors of this CPU's SHA instructions, or null where it has none.
// Variants for other machines join here.
inline block_function sha1_blocks_fast() {
#if defined(__x86_64__) && defined(__GNUC__)
  if (sha_ni_supported()) return sha1_blocks_ni;
#elif defined(VEXA_ARM_SHA)
  if (arm_sha1_supported()) return sha1_blocks_arm;
#endif
  return nullptr;
}
inline block_function sha256_blocks_fast() {
#if defined(__x86_64__) && defined(__GNUC__)
  if (sha_ni_supported()) return sha256_blocks_ni;
#elif defined(VEXA_ARM_SHA)
  if (arm_sha256_supported()) return sha256_blocks_arm;
#endif
  return nullptr;
}

// Whether the digests use the CPU's SHA instructions where it has them; tests
// and benchmarks clear these to run the portable rounds.
inline bool sha1_use_cpu_sha = sha1_blocks_fast() != nullptr;
inline bool sha256_use_cpu_sha = sha256_blocks_fast() != nullptr;

inline void sha1_blocks(const unsigned char* p, std::size_t count, uint32_t* state) {
  static const block_function fast = sha1_blocks_fast();
  (fast && sha1_use_cpu_sha ? fast : sha1_blocks_portable)(p, count, state);
}
inline void sha256_blocks(const unsigned char* p, std::size_t count, uint32_t* state) {
  static const block_function fast = sha256_blocks_fast();
  (fast && sha256_use_cpu_sha ? fast : sha256_blocks_portable)(p, count, state);
}

// The running digest of bytes added in any number of pieces. finish() pads the
// message (0x80, zeros up to 56 mod 64, the bit length in eight bytes) and gives
// the digest; the context is then spent.
template <block_function blocks, int words, bool big_endian>
struct digest_context {
  uint32_t state[words];
  uint64_t length = 0;        // bytes added
  unsigned char pending[64];  // the start of a block not yet full
  std::size_t used = 0;

  explicit digest_context(const uint32_t (&initial)[words]) { std::memcpy(state, initial, sizeof state); }

  void add(const void* data, std::size_t n) {
    if (n == 0) return;  // data may then be null, which memcpy must not see
    const unsigned char* p = static_cast<const unsigned char*>(data);
    length += n;
    if (used > 0) {
      std::size_t take = n < 64 - used ? n : 64 - used;
      std::memcpy(pending + used, p, take);
      used += take;
      p += take;
      n -= take;
      if (used < 64) return;
      blocks(pending, 1, state);
      used = 0;
    }
    // Whole blocks are compressed where they lie, without a copy.
    if (n >= 64) blocks(p, n / 64, state);
    used = n % 64;
    if (used > 0) std::memcpy(pending, p + n - used, used);
  }

  std::string finish() {
    uint64_t bits = length * 8;
    pending[used++] = 0x80;
    if (used > 56) {
      std::memset(pending + used, 0, 64 - used);
      blocks(pending, 1, state);
      used = 0;
    }
    std::memset(pending + used, 0, 56 - used);
    for (int i = 0; i < 8; ++i)
      pending[56 + i] = static_cast<unsigned char>(bits >> (big_endian ? 56 - 8 * i : 8 * i));
    blocks(pending, 1, state);
    std::string digest;
    digest.reserve(4 * words);
    for (uint32_t s : state) big_endian ? append_be32(digest, s) : append_le32(digest, s);
    return digest;
  }
};

struct md5_context : digest_context<md5_blocks, 4, false> {
  md5_context() : digest_context({0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476}) {}
};
struct sha1_context : digest_context<sha1_blocks, 5, true> {
  sha1_context() : digest_context({0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0}) {}
};
struct sha256_context : digest_context<sha256_blocks, 8, true> {
  sha256_context()
      : digest_context({0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab,
                        0x5be0cd19}) {}
};

inline std::string md5(const std::string& input) {
  md5_context context;
  context.add(input.data(), input.size());
  return context.finish();
}

inline std::string sha1(const std::string& input) {
  sha1_context context;
  context.add(input.data(), input.size());
  return context.finish();
}

inline std::string sha256(const std::string& input) {
  sha256_context context;
  context.add(input.data(), input.size());
  return context.finish();
}

}  // namespace base
