// Base64 of RFC 4648 with padding and no line breaks, and a lenient decoder that
// never refuses input.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

namespace base {

inline const char base64_alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The output is sized once and written through a pointer: appending a character
// at a time costs several times the encoding itself.
inline std::string base64(const std::string& bytes) {
  const unsigned char* in = reinterpret_cast<const unsigned char*>(bytes.data());
  std::string::size_type n = bytes.size(), i = 0;
  std::string text((n + 2) / 3 * 4, '=');
  char* out = &text[0];
  for (; i + 2 < n; i += 3, out += 4) {
    uint32_t v = uint32_t(in[i]) << 16 | uint32_t(in[i + 1]) << 8 | in[i + 2];
    out[0] = base64_alphabet[v >> 18];
    out[1] = base64_alphabet[v >> 12 & 63];
    out[2] = base64_alphabet[v >> 6 & 63];
    out[3] = base64_alphabet[v & 63];
  }
  if (i < n) {  // one or two bytes left; the padding is already in place
    uint32_t v = uint32_t(in[i]) << 16 | (i + 1 < n ? uint32_t(in[i + 1]) << 8 : 0);
    out[0] = base64_alphabet[v >> 18];
    out[1] = base64_alphabet[v >> 12 & 63];
    if (i + 1 < n) out[2] = base64_alphabet[v >> 6 & 63];
  }
  return text;
}

// Characters outside the alphabet are neither refused nor skipped: they take part in
// the arithmetic with the value 65, and "=" counts as padding only in places 3 and 4,
// so concatenated Base64 texts decode to the concatenated bytes.
inline std::string unbase64(const std::string& text) {
  // Indexed by byte value. Bytes 128 to 255 are outside the alphabet like any other
  // stranger, so they get 65 too.
  static const std::array<uint8_t, 256> table = [] {
    std::array<uint8_t, 256> t;
    t.fill(65);
    for (uint8_t v = 0; v < 64; ++v) t[static_cast<uint8_t>(base64_alphabet[v])] = v;
    t['='] = 64;
    return t;
  }();
  // The text ends at its first zero byte, as a C string would.
  std::string::size_type end = text.find('\0');
  if (end == std::string::npos) end = text.size();
  const unsigned char* in = reinterpret_cast<const unsigned char*>(text.data());
  std::string bytes(end / 4 * 3, '\0');
  char* out = &bytes[0];
  std::string::size_type written = 0;
  for (std::string::size_type i = 0; i < end; i += 4) {
    if (end - i < 4) {
      std::puts("Warning: input string length not multiple of 4.");
      break;
    }
    uint32_t d0 = table[in[i]], d1 = table[in[i + 1]], d2 = table[in[i + 2]], d3 = table[in[i + 3]];
    out[written++] = static_cast<char>((d0 << 2 | (d1 >> 4 & 3)) & 255);
    if (d2 == 64) continue;
    out[written++] = static_cast<char>((d1 << 4 | (d2 >> 2 & 15)) & 255);
    if (d3 == 64) continue;
    out[written++] = static_cast<char>((d2 << 6 | (d3 & 63)) & 255);
  }
  bytes.resize(written);
  return bytes;
}

}  // namespace base
