#include "base/base64.hpp"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "base/kernels.hpp"

namespace base {

namespace {

std::size_t base64_encode_portable(const unsigned char* in, std::size_t n, char* out) {
  // A lookup table indexed by a 12-bit value (half a group's bits) that holds
  // its two characters: one lookup makes half a group.
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

std::size_t unbase64_groups_portable(const unsigned char* in, std::size_t groups, char* out) {
  // A lookup table indexed by place and character: place[k][c] is character c's
  // share of the group's bytes when it stands in place k, laid out in memory as
  // the three output bytes and a fourth byte that flags padding: 2 for "=" in
  // place 3, 1 for "=" in place 4. Or-ing the four shares makes the group, which
  // one four-byte store writes whatever the machine's byte order; the next group
  // overwrites the fourth byte.
  struct decode_table {
    uint32_t place[4][256];
    uint32_t pad_third, pad_fourth;
  };
  static const decode_table table = [] {
    unsigned char value[256];
    std::memset(value, 65, sizeof value);  // bytes 128 to 255 are invalid too
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
using pieces_kernel = std::size_t (*)(const unsigned char* in, std::size_t pieces, char* out);

// A vector encoder: its kernel's whole pieces, then the portable code's tail.
template <base64_function kernel>
std::size_t base64_encode_with(const unsigned char* in, std::size_t n, char* out) {
  std::size_t taken = kernel(in, n, out);
  return taken / 3 * 4 + base64_encode_portable(in + taken, n - taken, out + taken / 3 * 4);
}

// A vector decoder: its kernel's pieces of `piece` groups while they are plain
// alphabet, the portable code for each piece that is not and for the tail.
template <pieces_kernel kernel, std::size_t piece>
std::size_t unbase64_with(const unsigned char* in, std::size_t groups, char* out) {
  char* o = out;
  while (groups >= piece) {
    std::size_t done = kernel(in, groups / piece, o);
    in += 4 * piece * done, o += 3 * piece * done, groups -= piece * done;
    if (groups < piece) break;
    o += unbase64_groups_portable(in, piece, o);
    in += 4 * piece, groups -= piece;
  }
  return static_cast<std::size_t>(o - out) + unbase64_groups_portable(in, groups, o);
}

// The chooser's table: the implementations in order of preference.
constexpr implementation<base64_function> encoders[] = {
#if defined(VEXA_X86_KERNELS)
    {"avx2", base64_encode_with<x86::base64_encode_avx2>, &cpu::features::avx2},
#endif
#if defined(VEXA_ARM_KERNELS)
    {"neon", base64_encode_with<arm::base64_encode_neon>, &cpu::features::neon},
#endif
    {"portable", base64_encode_portable, nullptr}};
chooser<base64_function> encoder(encoders);

// The chooser's table: the implementations in order of preference.
constexpr implementation<base64_function> decoders[] = {
#if defined(VEXA_X86_KERNELS)
    {"avx512", unbase64_with<x86::unbase64_pieces_avx512, 16>, &cpu::features::avx512},
    {"avx2", unbase64_with<x86::unbase64_pieces_avx2, 8>, &cpu::features::avx2},
#endif
#if defined(VEXA_ARM_KERNELS)
    {"neon", unbase64_with<arm::unbase64_pieces_neon, 16>, &cpu::features::neon},
#endif
    {"portable", unbase64_groups_portable, nullptr}};
chooser<base64_function> decoder(decoders);

}  // namespace

chooser<base64_function>& base64_encode_implementations() { return encoder; }
chooser<base64_function>& unbase64_implementations() { return decoder; }

std::size_t base64_encode(const unsigned char* in, std::size_t n, char* out) { return encoder.get()(in, n, out); }

std::size_t unbase64_groups(const unsigned char* in, std::size_t groups, char* out) {
  return decoder.get()(in, groups, out);
}

std::string base64(const std::string& bytes) {
  std::string text((bytes.size() + 2) / 3 * 4, '\0');
  base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), &text[0]);
  return text;
}

std::string unbase64(const std::string& text) {
  std::string::size_type end = text.find('\0');
  if (end == std::string::npos) end = text.size();
  std::string bytes(end / 4 * 3 + 1, '\0');
  bytes.resize(unbase64_groups(reinterpret_cast<const unsigned char*>(text.data()), end / 4, &bytes[0]));
  if (end % 4 != 0) std::puts(base64_length_warning);
  return bytes;
}

}  // namespace base
