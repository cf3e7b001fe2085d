#include "base/byte_codes.hpp"

namespace base {

void byte_codes::make_kernel_tables() {
  std::memset(kept_rows, 0, sizeof kept_rows);
  std::memset(letters, 0, sizeof letters);
  for (int c = 0; c < 128; ++c) {
    if (size[c] == 1) kept_rows[c & 15] = static_cast<uint8_t>(kept_rows[c & 15] | 1 << (c >> 4));
    if (size[c] == 2) letters[c] = static_cast<uint8_t>(text[c][1]);
  }
}

}  // namespace base
