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

std::string encoded(const unsigned char* p, size_t n, bool portable) {
  base::cpu::portable_only = portable;
  std::string text((n + 2) / 3 * 4, '\0');
  text.resize(base::base64_encode(p, n, &text[0]));
  return text;
}

std::string escaped(const unsigned char* p, size_t n, bool portable) {
  base::cpu::portable_only = portable;
  std::string text(4 * n, '\0');
  text.resize(base::c_escape_block(p, n, &text[0]));
  return text;
}

std::string url_encoded(const unsigned char* p, size_t n, bool portable) {
  base::cpu::portable_only = portable;
  std::string text(reinterpret_cast<const char*>(p), n);
  return base::url_encode(text, false) + base::url_encode(text, true);
}

std::string url_decoded(const unsigned char* p, size_t n, bool portable) {
  base::cpu::portable_only = portable;
  return base::url_decode(std::string(reinterpret_cast<const char*>(p), n), false);
}

std::string decoded(const unsigned char* p, size_t n, bool portable) {
  base::cpu::portable_only = portable;
  std::string bytes(n / 4 * 3 + 1, '\0');
  bytes.resize(base::unbase64_groups(p, n / 4, &bytes[0]));
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quiet();
  if (size == 0) return 0;
  size_t offset = data[0] % 64 < size - 1 ? data[0] % 64 : 0;
  const unsigned char* p = data + 1 + offset;
  size_t n = size - 1 - offset;
  if (encoded(p, n, false) != encoded(p, n, true)) std::abort();
  if (decoded(p, n, false) != decoded(p, n, true)) std::abort();
  if (escaped(p, n, false) != escaped(p, n, true)) std::abort();
  if (url_encoded(p, n, false) != url_encoded(p, n, true)) std::abort();
  if (url_decoded(p, n, false) != url_decoded(p, n, true)) std::abort();
  // Text of the alphabet, where the vector decoders do the work, with a byte of
  // the input's own put in at one place, which sends that piece to the portable code.
  std::string text = encoded(p, n, true);
  if (!text.empty() && n > 0) text[data[0] % text.size()] = static_cast<char>(p[0]);
  const unsigned char* t = reinterpret_cast<const unsigned char*>(text.data());
  if (decoded(t, text.size(), false) != decoded(t, text.size(), true)) std::abort();
  base::cpu::portable_only = false;
  return 0;
}
