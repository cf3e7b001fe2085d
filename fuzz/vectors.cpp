// The vector codings, escaping and URL coding against the portable ones, at any length and offset: the
// first byte picks the offset into the rest, the rest is both the bytes to
// encode and the text to decode.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/base64.hpp"
#include "base/cpu.hpp"
#include "base/escape.hpp"
#include "base/url.hpp"
#include "quiet.hpp"

namespace {

std::string encoded(const unsigned char* p, size_t n) {
  std::string text((n + 2) / 3 * 4, '\0');
  text.resize(base::base64_encode(p, n, &text[0]));
  return text;
}

std::string escaped(const unsigned char* p, size_t n) {
  std::string text(4 * n, '\0');
  text.resize(base::c_escape_block(p, n, &text[0]));
  return text;
}

std::string url_encoded(const unsigned char* p, size_t n) {
  std::string text(reinterpret_cast<const char*>(p), n);
  return base::url_encode(text, false) + base::url_encode(text, true);
}

std::string url_decoded(const unsigned char* p, size_t n) {
  return base::url_decode(std::string(reinterpret_cast<const char*>(p), n), false);
}

std::string decoded(const unsigned char* p, size_t n) {
  std::string bytes(n / 4 * 3 + 1, '\0');
  bytes.resize(base::unbase64_groups(p, n / 4, &bytes[0]));
  return bytes;
}

// Whether `code()` gives the same on every path: the portable code, AVX2 at
// most, and all the CPU offers.
template <class Code>
bool agrees(Code code) {
  base::cpu::portable_only = true;
  std::string portable = code();
  base::cpu::portable_only = false;
  base::cpu::withheld.avx512_vbmi2 = true;
  bool same = code() == portable;
  base::cpu::withheld.avx512_vbmi2 = false;
  return same && code() == portable;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quiet();
  if (size == 0) return 0;
  size_t offset = data[0] % 64 < size - 1 ? data[0] % 64 : 0;
  const unsigned char* p = data + 1 + offset;
  size_t n = size - 1 - offset;
  for (auto code : {encoded, decoded, escaped, url_encoded, url_decoded})
    if (!agrees([&] { return code(p, n); })) std::abort();
  // Text of the alphabet, where the vector decoders do the work, with a byte of
  // the input's own put in at one place, which sends that piece to the portable code.
  std::string text = encoded(p, n);
  if (!text.empty() && n > 0) text[data[0] % text.size()] = static_cast<char>(p[0]);
  const unsigned char* t = reinterpret_cast<const unsigned char*>(text.data());
  if (!agrees([&] { return decoded(t, text.size()); })) std::abort();
  return 0;
}
