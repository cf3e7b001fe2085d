// Base64 of RFC 4648 with padding and no line breaks, and a lenient decoder that
// never refuses input. The block functions do the work for whole strings and for
// files read in pieces alike.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "base/arm/base64.hpp"
#include "base/cpu.hpp"
#include "base/x86/base64.hpp"

namespace base {

inline const char base64_alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline const char base64_length_warning[] = "Warning: input string length not multiple of 4.";

// Encodes n bytes into out, which has room for (n + 2) / 3 * 4 characters, and
// returns that count. Only the last piece of a longer input may have a length
// that is not a multiple of 3.
inline std::size_t base64_encode_portable(const unsigned char* in, std::size_t n, char* out) {
  // The two characters of every 12-bit value: one lookup makes half a group.
  struct pair_table {
    char pair[4096][2];
  };
  static const pair_table table = [] {
    pair_table t;
    for (int v = 0; v < 4096; ++v) {
      t.pair[v][0] = base64_alphabet[v >> 6];
      t.pair[v][1] = base64_alphabet[v & 63];
    }
    return t;
  }();
  char* o = out;
  std::size_t i = 0;
  for (; i + 2 < n; i += 3, o += 4) {
    uint32_t v = uint32_t(in[i]) << 16 | uint32_t(in[i + 1]) << 8 | in[i + 2];
    std::memcpy(o, table.pair[v >> 12], 2);
    std::memcpy(o + 2, table.pair[v & 4095], 2);
  }
  if (i < n) {  // one or two bytes left, padded with "=" to a whole group
    uint32_t v = uint32_t(in[i]) << 16 | (i + 1 < n ? uint32_t(in[i + 1]) << 8 : 0);
    o[0] = base64_alphabet[v >> 18];
    o[1] = base64_alphabet[v >> 12 & 63];
    o[2] = i + 1 < n ? base64_alphabet[v >> 6 & 63] : '=';
    o[3] = '=';
    o += 4;
  }
  return static_cast<std::size_t>(o - out);
}

// Decodes `groups` groups of four characters into out, which has room for 3 *
// groups + 1 bytes, and returns the count of bytes decoded (three a group, fewer
// after padding).
//
// Characters outside the alphabet are neither refused nor skipped: they take part
// in the arithmetic with the value 65, and "=" counts as padding only in places 3
// and 4, elsewhere as 64, so concatenated Base64 texts decode to the concatenated
// bytes. Only the low six bits of a value reach the output (the shifts push the
// rest out of each byte), so 64 acts as 0 and 65 as 1.
inline std::size_t unbase64_groups_portable(const unsigned char* in, std::size_t groups, char* out) {
  // place[k][c] is character c's share of the group's bytes when it stands in
  // place k, laid out in memory as the three output bytes and a fourth byte that
  // flags padding: 2 for "=" in place 3, 1 for "=" in place 4. Or-ing the four
  // shares makes the group, which one four-byte store writes whatever the
  // machine's byte order; the next group overwrites the fourth byte.
  struct decode_table {
    uint32_t place[4][256];
    uint32_t pad_third, pad_fourth;
  };
  static const decode_table table = [] {
    unsigned char value[256];
    std::memset(value, 65, sizeof value);  // bytes 128 to 255 are strangers too
    for (int v = 0; v < 64; ++v)
      value[static_cast<unsigned char>(base64_alphabet[v])] = static_cast<unsigned char>(v);
    value[static_cast<unsigned char>('=')] = 64;
    decode_table t;
    for (int k = 0; k < 4; ++k)
      for (int c = 0; c < 256; ++c) {
        uint32_t bits = uint32_t(value[c] & 63) << (18 - 6 * k);
        unsigned char bytes[4] = {static_cast<unsigned char>(bits >> 16), static_cast<unsigned char>(bits >> 8),
                                  static_cast<unsigned char>(bits), 0};
        if (value[c] == 64 && k >= 2) bytes[3] = k == 2 ? 2 : 1;
        std::memcpy(&t.place[k][c], bytes, 4);
      }
    const unsigned char third[4] = {0, 0, 0, 2}, fourth[4] = {0, 0, 0, 1};
    std::memcpy(&t.pad_third, third, 4);
    std::memcpy(&t.pad_fourth, fourth, 4);
    return t;
  }();
  const uint32_t pad = table.pad_third | table.pad_fourth;
  char* o = out;
  for (; groups > 0; --groups, in += 4) {
    uint32_t v = table.place[0][in[0]] | table.place[1][in[1]] | table.place[2][in[2]] | table.place[3][in[3]];
    std::memcpy(o, &v, 4);
    o += (v & pad) == 0 ? 3 : (v & table.pad_third) ? 1 : 2;
  }
  return static_cast<std::size_t>(o - out);
}

// The same, through the CPU's vector instructions where it has them: they take
// whole pieces of plain alphabet, the portable code everything else.
inline std::size_t base64_encode(const unsigned char* in, std::size_t n, char* out) {
  std::size_t taken = 0;
#if defined(VEXA_X86_AVX2)
  if (cpu::has(&cpu::features::avx2)) taken = x86::base64_encode(in, n, out);
#elif defined(VEXA_ARM_NEON)
  if (cpu::has(&cpu::features::neon)) taken = arm::base64_encode(in, n, out, base64_alphabet);
#endif
  return taken / 3 * 4 + base64_encode_portable(in + taken, n - taken, out + taken / 3 * 4);
}

inline std::size_t unbase64_groups(const unsigned char* in, std::size_t groups, char* out) {
  char* o = out;
#if defined(VEXA_X86_AVX2) || defined(VEXA_ARM_NEON)
#if defined(VEXA_X86_AVX2)
  const std::size_t piece = 8;  // groups a vector step takes
  auto vector_pieces = [](const unsigned char* p, std::size_t count, char* to) {
    return x86::unbase64_pieces(p, count, to);
  };
  bool vectors = cpu::has(&cpu::features::avx2);
#else
  const std::size_t piece = 16;
  struct value_table {
    unsigned char plus_one[128];
  };
  static const value_table values = [] {
    value_table t = {};
    for (int v = 0; v < 64; ++v)
      t.plus_one[static_cast<unsigned char>(base64_alphabet[v])] = static_cast<unsigned char>(v + 1);
    return t;
  }();
  auto vector_pieces = [](const unsigned char* p, std::size_t count, char* to) {
    return arm::unbase64_pieces(p, count, to, values.plus_one);
  };
  bool vectors = cpu::has(&cpu::features::neon);
#endif
  while (vectors && groups >= piece) {
    std::size_t done = vector_pieces(in, groups / piece, o);
    in += 4 * piece * done, o += 3 * piece * done, groups -= piece * done;
    if (groups < piece) break;
    // A piece with padding or strangers in it.
    o += unbase64_groups_portable(in, piece, o);
    in += 4 * piece, groups -= piece;
  }
#endif
  return static_cast<std::size_t>(o - out) + unbase64_groups_portable(in, groups, o);
}

inline std::string base64(const std::string& bytes) {
  std::string text((bytes.size() + 2) / 3 * 4, '\0');
  base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), &text[0]);
  return text;
}

// The text ends at its first zero byte, as a C string would. A length that is
// not a multiple of 4 is reported, and the incomplete group dropped.
inline std::string unbase64(const std::string& text) {
  std::string::size_type end = text.find('\0');
  if (end == std::string::npos) end = text.size();
  std::string bytes(end / 4 * 3 + 1, '\0');
  bytes.resize(unbase64_groups(reinterpret_cast<const unsigned char*>(text.data()), end / 4, &bytes[0]));
  if (end % 4 != 0) std::puts(base64_length_warning);
  return bytes;
}

}  // namespace base
