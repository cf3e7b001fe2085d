// Percent-encoding of bytes. With escape_reserved false the bytes kept are those of
// ECMAScript's encodeURI, with it true those of encodeURIComponent. The block
// functions do the work for whole strings and for files read in pieces alike.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/cpu.hpp"
#include "base/text.hpp"
#include "base/x86/url.hpp"

namespace base {

// Encodes n bytes into out, which has room for 4 * n characters, and returns the
// count of characters written.
inline std::size_t url_encode_block(const unsigned char* in, std::size_t n, bool escape_reserved, char* out) {
  static const std::string reserved = ";,/?:@&=+$#";
  static const std::string unreserved = "-_.!~*'()";
  // esc[c] is 1 for a byte escaped whatever the flag.
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
  // Each byte's code under either flag, so the loop is one lookup a byte.
  static const std::array<byte_codes, 2> codes = [] {
    const char* digits = hex_digits + 16;  // uppercase
    std::array<byte_codes, 2> t;
    for (int flag = 0; flag < 2; ++flag)
      for (int c = 0; c < 256; ++c) {
        char* text = t[flag].text[c];
        if (esc[c] || (flag && reserved.find(static_cast<char>(c)) != std::string::npos)) {
          text[0] = '%';
          text[1] = digits[c >> 4];
          text[2] = digits[c & 15];
          t[flag].size[c] = 3;
        } else {
          text[0] = static_cast<char>(c);
          t[flag].size[c] = 1;
        }
      }
    return t;
  }();
  char* o = out;
  std::size_t taken = 0;
#if defined(VEXA_X86_AVX2_RUNS)
  // Bit h of row l tells whether byte 16 * h + l is kept, under either flag.
  static const std::array<std::array<uint8_t, 16>, 2> kept_rows = [] {
    std::array<std::array<uint8_t, 16>, 2> t{};
    for (int flag = 0; flag < 2; ++flag)
      for (int c = 0; c < 128; ++c)
        if (codes[flag].size[c] == 1) t[flag][c & 15] = static_cast<uint8_t>(t[flag][c & 15] | 1 << (c >> 4));
    return t;
  }();
  if (cpu::has(&cpu::features::avx512_vbmi2)) {
    taken = x86::encode_planes(in, n, o, x86::url_escape_planes{codes[escape_reserved].size});
  } else if (cpu::has(&cpu::features::avx2)) {
    taken = x86::encode_runs(in, n, o, codes[escape_reserved], x86::url_escaped(kept_rows[escape_reserved].data()));
  }
#endif
  // Spaces come every few bytes in text, so eight unchanged bytes are too rare to test for.
  return static_cast<std::size_t>(o - out) +
         encode_bytes(codes[escape_reserved], in + taken, n - taken, o, never_unchanged);
}

// Decodes n bytes into out, which has room for n bytes, and returns the count of
// bytes decoded; `used` is set to the count of input bytes taken. A "%" with
// fewer than two bytes after it stays as it is at the end of the input (`last`),
// and is otherwise left, with what follows it, for the next piece to complete.
//
// Escape digits are not checked: any byte goes through the digit arithmetic, and
// unsigned wrap-around keeps the low eight bits of a negative digit value.
inline std::size_t url_decode_block(const unsigned char* in, std::size_t n, bool last, bool plus_to_space,
                                    char* out, std::size_t& used) {
  static const std::array<uint8_t, 256> digit = [] {
    std::array<uint8_t, 256> t;
    for (uint32_t x = 0; x < 256; ++x) t[x] = static_cast<uint8_t>(x > 96 ? x - 87 : x > 64 ? x - 55 : x - 48);
    return t;
  }();
  char* o = out;
  std::size_t i = 0;
#if defined(VEXA_X86_AVX2_RUNS)
  if (!plus_to_space && cpu::has(&cpu::features::avx2)) i = x86::url_decode(in, n, o, digit.data());
#endif
  while (i < n) {
    unsigned char c = in[i];
    if (c == '%') {
      if (i + 2 < n) {
        *o++ = static_cast<char>(digit[in[i + 1]] * 16 + digit[in[i + 2]]);
        i += 3;
        continue;
      }
      if (!last) break;
    } else if (c == '+' && plus_to_space) {
      c = ' ';
    }
    *o++ = static_cast<char>(c);
    ++i;
  }
  used = i;
  return static_cast<std::size_t>(o - out);
}

inline std::string url_encode(const std::string& text, bool escape_reserved) {
  std::string encoded(4 * text.size(), '\0');
  encoded.resize(url_encode_block(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                                  escape_reserved, &encoded[0]));
  return encoded;
}

inline std::string url_decode(const std::string& text, bool plus_to_space) {
  std::string decoded(text.size(), '\0');
  std::size_t used;
  decoded.resize(url_decode_block(reinterpret_cast<const unsigned char*>(text.data()), text.size(), true,
                                  plus_to_space, &decoded[0], used));
  return decoded;
}

}  // namespace base
