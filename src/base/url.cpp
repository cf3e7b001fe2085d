#include "base/url.hpp"

#include <array>
#include <cstdint>

#include "base/byte_codes.hpp"
#include "base/text.hpp"
#include "base/kernels.hpp"

namespace base {

namespace {

// The lookup tables of the two codes, indexed by escape_reserved.
const std::array<byte_codes, 2>& url_codes() {
  static const std::array<byte_codes, 2> codes = [] {
    const std::string reserved = ";,/?:@&=+$#", unreserved = "-_.!~*'()";
    const char* digits = hex_digits + 16;  // uppercase
    std::array<byte_codes, 2> t;
    for (int flag = 0; flag < 2; ++flag) {
      t[flag].kind = byte_codes::percent;
      for (int c = 0; c < 256; ++c) {
        bool alnum = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
        bool is_reserved = c < 128 && reserved.find(static_cast<char>(c)) != std::string::npos;
        bool is_unreserved = c < 128 && unreserved.find(static_cast<char>(c)) != std::string::npos;
        bool kept = c < 128 && (alnum || (is_reserved && !flag) || is_unreserved);
        char* text = t[flag].text[c];
        if (kept) {
          text[0] = static_cast<char>(c);
          t[flag].size[c] = 1;
        } else {
          text[0] = '%';
          text[1] = digits[c >> 4];
          text[2] = digits[c & 15];
          t[flag].size[c] = 3;
        }
      }
      t[flag].make_kernel_tables();
    }
    return t;
  }();
  return codes;
}

// Spaces come every few bytes in text, so eight unchanged bytes are too rare to test for.
template <encode_kernel kernel>
std::size_t url_encode_with(const unsigned char* in, std::size_t n, bool escape_reserved, char* out) {
  return encode_bytes(kernel, url_codes()[escape_reserved], in, n, out, never_unchanged);
}

std::size_t url_decode_portable(const unsigned char* in, std::size_t n, bool last, bool plus_to_space, char* out,
                                std::size_t& used) {
  // A lookup table indexed by byte value that holds its value as an escape digit.
  static const std::array<uint8_t, 256> digit = [] {
    std::array<uint8_t, 256> t;
    for (uint32_t x = 0; x < 256; ++x) t[x] = static_cast<uint8_t>(x > 96 ? x - 87 : x > 64 ? x - 55 : x - 48);
    return t;
  }();
  char* o = out;
  std::size_t i = 0;
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

#if defined(VEXA_X86_KERNELS)
// The kernels leave "+" as it is, so they serve only where "+" stays.
template <std::size_t (*kernel)(const unsigned char*, std::size_t, char*&)>
std::size_t url_decode_with(const unsigned char* in, std::size_t n, bool last, bool plus_to_space, char* out,
                            std::size_t& used) {
  char* o = out;
  std::size_t taken = plus_to_space ? 0 : kernel(in, n, o);
  std::size_t decoded = url_decode_portable(in + taken, n - taken, last, plus_to_space, o, used);
  used += taken;
  return static_cast<std::size_t>(o - out) + decoded;
}
#endif

// The chooser's table: the implementations in order of preference.
constexpr implementation<url_encode_function> encoders[] = {
#if defined(VEXA_X86_KERNELS)
    {"avx512", url_encode_with<x86::encode_bytes_avx512>, &cpu::features::avx512},
    {"avx2", url_encode_with<x86::encode_bytes_avx2>, &cpu::features::avx2},
#endif
    {"portable", url_encode_with<nullptr>, nullptr}};
chooser<url_encode_function> encoder(encoders);

// The chooser's table: the implementations in order of preference.
constexpr implementation<url_decode_function> decoders[] = {
#if defined(VEXA_X86_KERNELS)
    {"avx512", url_decode_with<x86::url_decode_avx512>, &cpu::features::avx512},
    {"avx2", url_decode_with<x86::url_decode_avx2>, &cpu::features::avx2},
#endif
    {"portable", url_decode_portable, nullptr}};
chooser<url_decode_function> decoder(decoders);

}  // namespace

chooser<url_encode_function>& url_encode_implementations() { return encoder; }
chooser<url_decode_function>& url_decode_implementations() { return decoder; }

std::size_t url_encode_block(const unsigned char* in, std::size_t n, bool escape_reserved, char* out) {
  return encoder.get()(in, n, escape_reserved, out);
}

std::size_t url_decode_block(const unsigned char* in, std::size_t n, bool last, bool plus_to_space, char* out,
                             std::size_t& used) {
  return decoder.get()(in, n, last, plus_to_space, out, used);
}

std::string url_encode(const std::string& text, bool escape_reserved) {
  std::string encoded(4 * text.size(), '\0');
  encoded.resize(url_encode_block(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                                  escape_reserved, &encoded[0]));
  return encoded;
}

std::string url_decode(const std::string& text, bool plus_to_space) {
  std::string decoded(text.size(), '\0');
  std::size_t used;
  decoded.resize(url_decode_block(reinterpret_cast<const unsigned char*>(text.data()), text.size(), true,
                                  plus_to_space, &decoded[0], used));
  return decoded;
}

}  // namespace base
