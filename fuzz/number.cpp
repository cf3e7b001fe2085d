// base::comma of arbitrary text, and base::num of arbitrary doubles and ints.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/text.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  std::string grouped = base::comma(text);
  if (grouped.size() < base::trim(text).size()) std::abort();
  if (size >= sizeof(double)) {
    double x;
    int n;
    std::memcpy(&x, data, sizeof x);
    std::memcpy(&n, data, sizeof n);
    if (base::num(x).empty() || base::num(n).empty()) std::abort();
  }
  return 0;
}
