// Base64 with NEON, 48 bytes to 64 characters a step, on little-endian arm64.
// Both kernels take whole pieces only and leave the rest, and every piece that
// is not plain alphabet, to the portable code, which is the reference for what
// any text decodes to.
#include <arm_neon.h>

#include "base/kernels.hpp"
#include "base/base64.hpp"

namespace base::arm {

namespace {

// The 64 bytes of a lookup table in four vectors, for vqtbl4q_u8.
uint8x16x4_t load_64(const unsigned char* table) {
  return {{vld1q_u8(table), vld1q_u8(table + 16), vld1q_u8(table + 32), vld1q_u8(table + 48)}};
}

// A lookup table indexed by byte value below 128 that holds the byte's value
// in the alphabet plus 1, or 0 for an invalid character.
struct value_table {
  unsigned char plus_one[128];
};

const value_table& values() {
  static const value_table table = [] {
    value_table t = {};
    for (int v = 0; v < 64; ++v)
      t.plus_one[static_cast<unsigned char>(base64_alphabet[v])] = static_cast<unsigned char>(v + 1);
    return t;
  }();
  return table;
}

}  // namespace

std::size_t base64_encode_neon(const unsigned char* in, std::size_t n, char* out) {
  const uint8x16x4_t table = load_64(reinterpret_cast<const unsigned char*>(base64_alphabet));
  std::size_t i = 0;
  for (; i + 48 <= n; i += 48, out += 64) {
    uint8x16x3_t b = vld3q_u8(in + i);  // the first, second and third bytes of 16 groups
    uint8x16x4_t v;
    v.val[0] = vshrq_n_u8(b.val[0], 2);
    v.val[1] = vorrq_u8(vandq_u8(vshlq_n_u8(b.val[0], 4), vdupq_n_u8(0x30)), vshrq_n_u8(b.val[1], 4));
    v.val[2] = vorrq_u8(vandq_u8(vshlq_n_u8(b.val[1], 2), vdupq_n_u8(0x3c)), vshrq_n_u8(b.val[2], 6));
    v.val[3] = vandq_u8(b.val[2], vdupq_n_u8(0x3f));
    for (int k = 0; k < 4; ++k) v.val[k] = vqtbl4q_u8(table, v.val[k]);
    vst4q_u8(reinterpret_cast<unsigned char*>(out), v);
  }
  return i;
}

std::size_t unbase64_pieces_neon(const unsigned char* in, std::size_t pieces, char* out) {
  const unsigned char* plus_one = values().plus_one;
  const uint8x16x4_t low = load_64(plus_one), high = load_64(plus_one + 64);
  std::size_t done = 0;
  for (; done < pieces; ++done, in += 64, out += 48) {
    uint8x16x4_t c = vld4q_u8(in);  // the first, second, third and fourth characters of 16 groups
    uint8x16_t all = vdupq_n_u8(0xff);
    for (int k = 0; k < 4; ++k) {
      // Out-of-range indexes give 0: bytes from 128 on, and each half's other half.
      c.val[k] = vorrq_u8(vqtbl4q_u8(low, c.val[k]), vqtbl4q_u8(high, vsubq_u8(c.val[k], vdupq_n_u8(64))));
      all = vminq_u8(all, c.val[k]);
      c.val[k] = vsubq_u8(c.val[k], vdupq_n_u8(1));
    }
    if (vminvq_u8(all) == 0) break;
    uint8x16x3_t b;
    b.val[0] = vorrq_u8(vshlq_n_u8(c.val[0], 2), vshrq_n_u8(c.val[1], 4));
    b.val[1] = vorrq_u8(vshlq_n_u8(c.val[1], 4), vshrq_n_u8(c.val[2], 2));
    b.val[2] = vorrq_u8(vshlq_n_u8(c.val[2], 6), c.val[3]);
    vst3q_u8(reinterpret_cast<unsigned char*>(out), b);
  }
  return done;
}

}  // namespace base::arm
