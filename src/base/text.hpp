// Number text, digit grouping, and the text of bytes: hexadecimal, or one code
// per byte through a table.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace base {

// Blanks, tabs and line ends: what trimming removes everywhere in vexa.
inline const char* const blanks = " \t\r\n";

inline std::string trim(const std::string& text) {
  std::string::size_type first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

inline std::string num(int n) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%d", n);
  return buf;
}

// Whole values print in full digits, however large; the largest double needs 309
// digits and a sign, so 512 bytes always suffice.
inline std::string num(double x) {
  double whole;
  char buf[512];
  if (std::modf(x, &whole) == 0.0)
    std::snprintf(buf, sizeof buf, "%.0f", x);
  else
    std::snprintf(buf, sizeof buf, "%g", x);
  return buf;
}

// A comma after every third character of the integer part, from the right. Nothing
// is checked, so a sign or letters count as positions too: "-123" gives "-,123".
inline std::string comma(const std::string& number) {
  std::string text = trim(number);
  std::string::size_type point = text.rfind('.');
  std::string integer = text.substr(0, point);
  std::string tail = point == std::string::npos ? std::string() : text.substr(point);
  std::string grouped;
  grouped.reserve(integer.size() + integer.size() / 3 + tail.size());
  for (std::string::size_type i = 0; i < integer.size(); ++i) {
    if (i > 0 && (integer.size() - i) % 3 == 0) grouped += ',';
    grouped += integer[i];
  }
  return grouped + tail;
}

// The hexadecimal digits, lowercase, then uppercase from hex_digits + 16.
inline const char hex_digits[] = "0123456789abcdef0123456789ABCDEF";

inline std::string hex(const std::string& bytes) {
  std::string text(bytes.size() * 2, '0');
  for (std::string::size_type i = 0; i < bytes.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(bytes[i]);
    text[2 * i] = hex_digits[c >> 4];
    text[2 * i + 1] = hex_digits[c & 15];
  }
  return text;
}

// The code of every byte value, for encoders that turn each byte into text on
// its own: up to four characters, of which size[c] count.
struct byte_codes {
  char text[256][4];
  uint8_t size[256];
};

// The word test of encode_bytes for bytes where eight unchanged in a row are rare.
inline bool never_unchanged(uint64_t) { return false; }

// Writes the codes of n bytes into out, which has room for 4 * n characters, and
// returns the count of characters written. Every code is stored as four
// characters and the next one starts after its size, so a byte costs one store
// whatever its code. Eight bytes at a time for which unchanged(word) holds are
// copied whole. Taking them into a local first spares a reload of each after the
// store, which might have changed it for all the compiler knows.
template <class Unchanged>
std::size_t encode_bytes(const byte_codes& codes, const unsigned char* in, std::size_t n, char* out,
                         Unchanged unchanged) {
  char* o = out;
  std::size_t i = 0;
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

// Tests on eight bytes at once, whatever the machine's byte order: whether any
// byte is below n (n at most 128), above 126, or equal to c.
constexpr uint64_t each_byte(unsigned char c) { return 0x0101010101010101u * c; }
inline bool any_below(uint64_t w, unsigned char n) { return ((w - each_byte(n)) & ~w & each_byte(0x80)) != 0; }
inline bool any_above_126(uint64_t w) { return ((w + each_byte(1)) | w) & each_byte(0x80); }
inline bool any_equal(uint64_t w, unsigned char c) { return any_below(w ^ each_byte(c), 1); }

}  // namespace base
