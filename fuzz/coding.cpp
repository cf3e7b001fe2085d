// Arbitrary bytes through every decoder, and encode-then-decode round trips,
// which must give the input back.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/base64.hpp"
#include "base/url.hpp"
#include "quiet.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quiet();
  std::string input(reinterpret_cast<const char*>(data), size);
  base::unbase64(input);
  base::url_decode(input, false);
  base::url_decode(input, true);
  // Decoding stops at a zero byte, so Base64 round trips hold up to the first one.
  std::string text = input.substr(0, input.find('\0'));
  if (base::unbase64(base::base64(text)) != text) std::abort();
  if (base::url_decode(base::url_encode(input, false), false) != input) std::abort();
  if (base::url_decode(base::url_encode(input, true), true) != input) std::abort();
  return 0;
}
