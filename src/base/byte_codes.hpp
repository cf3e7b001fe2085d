// Encoders that turn each byte into a code of its own (escape, url_encode): the
// lookup table of codes, and the portable loop through it that the vector
// kernels leave the rest of their input to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace base {

// The lookup tables of one byte-wise code, indexed by byte value, and its style:
// escape's (a backslash and a letter, or \x and two lowercase digits) or
// url_encode's ("%" and two uppercase digits), which the vector kernels make
// without the tables. text[c] holds
// byte c's code, up to four characters, of which size[c] count (1 for a byte
// kept as it is; no code holds a zero byte). The vector kernels read two tables
// made from these: kept_rows, where bit h of kept_rows[l] is set when byte
// 16 * h + l is kept (bytes from 128 up never are), and letters, which holds
// for each byte below 128 the second character of its two-character code, or 0.
struct byte_codes {
  enum style { c_string, percent };
  style kind;
  char text[256][4];
  uint8_t size[256];
  uint8_t kept_rows[16];
  uint8_t letters[128];

  // Fills kept_rows and letters from text and size.
  void make_kernel_tables();
};

// A vector kernel for a byte-wise code: codes bytes from the start of `in`
// while enough remain for its steps, moves `out` past the characters written
// and returns the count of bytes taken. `out` has room for 4 characters a byte.
using encode_kernel = std::size_t (*)(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes);

// The word test of encode_bytes for bytes where eight unchanged in a row are rare.
inline bool never_unchanged(uint64_t) { return false; }

// Writes the codes of n bytes into out, which has room for 4 * n characters, and
// returns the count of characters written, after `kernel` (unless null) has
// coded what it takes. Every code is stored as four characters and the next one
// starts after its size, so a byte costs one store whatever its code. Eight
// bytes at a time for which unchanged(word) holds are copied whole. Taking them
// into a local first spares a reload of each after the store, which might have
// changed it for all the compiler knows.
template <class Unchanged>
std::size_t encode_bytes(encode_kernel kernel, const byte_codes& codes, const unsigned char* in, std::size_t n,
                         char* out, Unchanged unchanged) {
  char* o = out;
  std::size_t i = kernel ? kernel(in, n, o, codes) : 0;
  for (; i + 8 <= n; i += 8) {
    unsigned char c[8];
    std::memcpy(c, in + i, 8);
    uint64_t word;
    std::memcpy(&word, c, 8);
    if (unchanged(word)) {
      std::memcpy(o, c, 8);
      o += 8;
      continue;
    }
#pragma GCC unroll 8
    for (int k = 0; k < 8; ++k) {
      std::memcpy(o, codes.text[c[k]], 4);
      o += codes.size[c[k]];
    }
  }
  for (; i < n; ++i) {
    std::memcpy(o, codes.text[in[i]], 4);
    o += codes.size[in[i]];
  }
  return static_cast<std::size_t>(o - out);
}

}  // namespace base
