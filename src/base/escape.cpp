#include "base/escape.hpp"

#include "base/byte_codes.hpp"
#include "base/text.hpp"
#include "base/kernels.hpp"

namespace base {

namespace {

// Tests on eight bytes at once, whatever the machine's byte order: whether any
// byte is below n (n at most 128), above 126, or equal to c.
constexpr uint64_t each_byte(unsigned char c) { return 0x0101010101010101u * c; }
bool any_below(uint64_t w, unsigned char n) { return ((w - each_byte(n)) & ~w & each_byte(0x80)) != 0; }
bool any_above_126(uint64_t w) { return ((w + each_byte(1)) | w) & each_byte(0x80); }
bool any_equal(uint64_t w, unsigned char c) { return any_below(w ^ each_byte(c), 1); }

// Text runs long between line feeds: eight printable bytes go out as they are.
bool printable(uint64_t w) {
  return !any_below(w, 32) && !any_above_126(w) && !any_equal(w, '"') && !any_equal(w, '\\');
}

const byte_codes& escape_codes() {
  static const byte_codes codes = [] {
    // The named escapes: each byte with its letter.
    static const char named[][2] = {{'"', '"'},  {'\\', '\\'}, {'\b', 'b'}, {'\f', 'f'},
                                    {'\n', 'n'}, {'\r', 'r'},   {'\t', 't'}, {'\0', '0'}};
    byte_codes t;
    t.kind = byte_codes::c_string;
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
    t.make_kernel_tables();
    return t;
  }();
  return codes;
}

template <encode_kernel kernel>
std::size_t c_escape_with(const unsigned char* in, std::size_t n, char* out) {
  return encode_bytes(kernel, escape_codes(), in, n, out, printable);
}

// The chooser's table: the implementations in order of preference.
constexpr implementation<c_escape_function> escapers[] = {
#if defined(VEXA_X86_KERNELS)
    {"avx512", c_escape_with<x86::encode_bytes_avx512>, &cpu::features::avx512},
    {"avx2", c_escape_with<x86::encode_bytes_avx2>, &cpu::features::avx2},
#endif
    {"portable", c_escape_with<nullptr>, nullptr}};
chooser<c_escape_function> escaper(escapers);

}  // namespace

chooser<c_escape_function>& c_escape_implementations() { return escaper; }

std::size_t c_escape_block(const unsigned char* in, std::size_t n, char* out) { return escaper.get()(in, n, out); }

}  // namespace base
