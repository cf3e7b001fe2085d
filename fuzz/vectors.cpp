// Every implementation of the codings, escaping and URL coding against the
// portable one, at any length and offset: the first byte picks the offset into
// the rest, the rest is both the bytes to encode and the text to decode.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/base64.hpp"
#include "base/escape.hpp"
#include "base/url.hpp"
#include "quiet.hpp"

namespace {

std::string encoded(const unsigned char* p, size_t n) {
  std::string text((n + 2) / 3 * 4, '\0');
  text.resize(base::base64_encode(p, n, &text[0]));
  return text;
}

std::string decoded(const unsigned char* p, size_t n) {
  std::string bytes(n / 4 * 3 + 1, '\0');
  bytes.resize(base::unbase64_groups(p, n / 4, &bytes[0]));
  return bytes;
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

// Stops the run where an implementation this CPU supports gives other than the
// portable one, naming it (the crash report's stack names the algorithm).
template <class Function>
void check(base::chooser<Function>& algorithm, std::string (*code)(const unsigned char*, size_t),
           const unsigned char* p, size_t n) {
  algorithm.use("portable");
  std::string portable = code(p, n);
  for (const base::implementation<Function>& i : algorithm)
    if (i.supported() && algorithm.use(i.name) && code(p, n) != portable) {
      std::fprintf(stderr, "%s differs from portable\n", i.name);
      std::abort();
    }
  algorithm.use(nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quiet();
  if (size == 0) return 0;
  size_t offset = data[0] % 64 < size - 1 ? data[0] % 64 : 0;
  const unsigned char* p = data + 1 + offset;
  size_t n = size - 1 - offset;
  check(base::base64_encode_implementations(), encoded, p, n);
  check(base::unbase64_implementations(), decoded, p, n);
  check(base::c_escape_implementations(), escaped, p, n);
  check(base::url_encode_implementations(), url_encoded, p, n);
  check(base::url_decode_implementations(), url_decoded, p, n);
  // Text of the alphabet, where the vector decoders do the work, with a byte of
  // the input's own put in at one place, which sends that piece to the portable code.
  std::string text = encoded(p, n);
  if (!text.empty() && n > 0) text[data[0] % text.size()] = static_cast<char>(p[0]);
  check(base::unbase64_implementations(), decoded, reinterpret_cast<const unsigned char*>(text.data()), text.size());
  return 0;
}
