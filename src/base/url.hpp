// Percent-encoding of bytes. With escape_reserved false the bytes kept are those of
// ECMAScript's encodeURI, with it true those of encodeURIComponent.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace base {

inline std::string url_encode(const std::string& text, bool escape_reserved) {
  static const std::string reserved = ";,/?:@&=+$#";
  static const std::string unreserved = "-_.!~*'()";
  // esc[c] is 1 for a byte escaped whatever the flag, so most bytes cost one lookup.
  static const std::array<uint8_t, 256> esc = [] {
    std::array<uint8_t, 256> t;
    for (int c = 0; c < 256; ++c) {
      bool alnum = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
      bool kept = c < 128 && (alnum || reserved.find(static_cast<char>(c)) != std::string::npos ||
                              unreserved.find(static_cast<char>(c)) != std::string::npos);
      t[c] = kept ? 0 : 1;
    }
    return t;
  }();
  static const char digits[] = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size());
  for (char ch : text) {
    uint8_t c = static_cast<uint8_t>(ch);
    if (esc[c] || (escape_reserved && reserved.find(ch) != std::string::npos)) {
      encoded += '%';
      encoded += digits[c >> 4];
      encoded += digits[c & 15];
    } else {
      encoded += ch;
    }
  }
  return encoded;
}

// Escape digits are not checked: any byte goes through the digit arithmetic, and
// unsigned wrap-around keeps the low eight bits of a negative digit value.
inline std::string url_decode(const std::string& text, bool plus_to_space) {
  auto digit = [](char ch) -> uint32_t {
    uint32_t x = static_cast<uint8_t>(ch);
    return x > 96 ? x - 87 : x > 64 ? x - 55 : x - 48;
  };
  std::string decoded;
  decoded.reserve(text.size());
  for (std::string::size_type i = 0; i < text.size(); ++i) {
    char ch = text[i];
    if (ch == '%' && i + 2 < text.size()) {
      decoded += static_cast<char>((digit(text[i + 1]) * 16 % 256 + digit(text[i + 2])) % 256);
      i += 2;
    } else if (ch == '+' && plus_to_space) {
      decoded += ' ';
    } else {
      decoded += ch;
    }
  }
  return decoded;
}

}  // namespace base
