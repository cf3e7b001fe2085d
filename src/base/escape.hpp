// C-string escaping: the bytes as the body of one C string literal.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "base/cpu.hpp"
#include "base/text.hpp"
#include "base/x86/escape.hpp"

namespace base {

// Escapes n bytes into out, which has room for 4 * n characters, and returns the
// count of characters written: a backslash and a letter for the named bytes, the
// byte itself for the rest of 32 to 126, a backslash, x and two digits for every
// other byte.
inline std::size_t c_escape_block(const unsigned char* in, std::size_t n, char* out) {
  static const byte_codes codes = [] {
    static const char named[][2] = {{'"', '"'},  {'\\', '\\'}, {'\b', 'b'}, {'\f', 'f'},
                                    {'\n', 'n'}, {'\r', 'r'},   {'\t', 't'}, {'\0', '0'}};
    byte_codes t;
    for (int c = 0; c < 256; ++c) {
      char* text = t.text[c];
      if (c >= 32 && c <= 126) {
        text[0] = static_cast<char>(c);
        t.size[c] = 1;
      } else {
        const char code[4] = {'\\', 'x', hex_digits[c >> 4], hex_digits[c & 15]};
        std::memcpy(text, code, 4);
        t.size[c] = 4;
      }
    }
    for (const char* name : named) {
      char* text = t.text[static_cast<unsigned char>(name[0])];
      text[0] = '\\';
      text[1] = name[1];
      t.size[static_cast<unsigned char>(name[0])] = 2;
    }
    return t;
  }();
  char* o = out;
  std::size_t taken = 0;
#if defined(VEXA_X86_AVX2_RUNS)
  static const std::array<uint8_t, 128> letters = [] {
    std::array<uint8_t, 128> t{};
    for (int c = 0; c < 128; ++c)
      if (codes.size[c] == 2) t[c] = static_cast<uint8_t>(codes.text[c][1]);
    return t;
  }();
  if (cpu::has(&cpu::features::avx512_vbmi2))
    taken = x86::encode_planes(in, n, o, x86::c_escape_planes{letters.data()});
  else if (cpu::has(&cpu::features::avx2))
    taken = x86::encode_runs(in, n, o, codes, x86::c_escaped{letters.data()});
#endif
  // Text runs long between line feeds: eight printable bytes go out as they are.
  return static_cast<std::size_t>(o - out) + encode_bytes(codes, in + taken, n - taken, o, [](uint64_t w) {
    return !any_below(w, 32) && !any_above_126(w) && !any_equal(w, '"') && !any_equal(w, '\\');
  });
}

}  // namespace base
