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

inline std::string base64(const std::string& bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  std::string::size_type i = 0;
  for (; i + 2 < bytes.size(); i += 3) {
    uint32_t b0 = static_cast<uint8_t>(bytes[i]);
    uint32_t b1 = static_cast<uint8_t>(bytes[i + 1]);
    uint32_t b2 = static_cast<uint8_t>(bytes[i + 2]);
    text += base64_alphabet[b0 >> 2];
    text += base64_alphabet[(b0 & 3) << 4 | b1 >> 4];
    text += base64_alphabet[(b1 & 15) << 2 | b2 >> 6];
    text += base64_alphabet[b2 & 63];
  }
  if (i + 2 == bytes.size()) {
    uint32_t b0 = static_cast<uint8_t>(bytes[i]);
    uint32_t b1 = static_cast<uint8_t>(bytes[i + 1]);
    text += base64_alphabet[b0 >> 2];
    text += base64_alphabet[(b0 & 3) << 4 | b1 >> 4];
    text += base64_alphabet[(b1 & 15) << 2];
    text += '=';
  } else if (i + 1 == bytes.size()) {
    uint32_t b0 = static_cast<uint8_t>(bytes[i]);
    text += base64_alphabet[b0 >> 2];
    text += base64_alphabet[(b0 & 3) << 4];
    text += "==";
  }
  return text;
}

// Characters outside the alphabet are neither refused nor skipped: they take part in
// the arithmetic with the value 65, and "=" counts as padding only in places 3 and 4,
// so concatenated Base64 texts decode to the concatenated bytes.
inline std::string unbase64(const std::string& text) {
  static const std::array<uint8_t, 128> table = [] {
    std::array<uint8_t, 128> t;
    t.fill(65);
    for (uint8_t v = 0; v < 64; ++v) t[static_cast<uint8_t>(base64_alphabet[v])] = v;
    t['='] = 64;
    return t;
  }();
  // The text ends at its first zero byte, as a C string would.
  std::string::size_type end = text.find('\0');
  if (end == std::string::npos) end = text.size();
  std::string bytes;
  bytes.reserve(end / 4 * 3);
  for (std::string::size_type i = 0; i < end; i += 4) {
    if (end - i < 4) {
      std::puts("Warning: input string length not multiple of 4.");
      break;
    }
    uint32_t d[4];
    for (int k = 0; k < 4; ++k) {
      uint8_t c = static_cast<uint8_t>(text[i + k]);
      // Bytes 128 to 255 have no table entry: they count as outside the alphabet.
      d[k] = c < 128 ? table[c] : 65;
    }
    bytes += static_cast<char>((d[0] << 2 | (d[1] >> 4 & 3)) & 255);
    if (d[2] == 64) continue;
    bytes += static_cast<char>((d[1] << 4 | (d[2] >> 2 & 15)) & 255);
    if (d[3] == 64) continue;
    bytes += static_cast<char>((d[2] << 6 | (d[3] & 63)) & 255);
  }
  return bytes;
}

}  // namespace base
