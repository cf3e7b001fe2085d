#include "base/digest_context.hpp"

#include <cstring>

namespace base {

digest_context::digest_context(block_function blocks, const uint32_t* initial, int words, bool big_endian)
    : blocks_(blocks), words_(words), big_endian_(big_endian) {
  std::memcpy(state_, initial, sizeof(uint32_t) * static_cast<std::size_t>(words));
}

void digest_context::add(const void* data, std::size_t n) {
  if (n == 0) return;  // data may then be null, which memcpy must not see
  const unsigned char* p = static_cast<const unsigned char*>(data);
  length_ += n;
  if (used_ > 0) {
    std::size_t take = n < 64 - used_ ? n : 64 - used_;
    std::memcpy(pending_ + used_, p, take);
    used_ += take;
    p += take;
    n -= take;
    if (used_ < 64) return;
    blocks_(pending_, 1, state_);
    used_ = 0;
  }
  // Whole blocks are compressed where they lie, without a copy.
  if (n >= 64) blocks_(p, n / 64, state_);
  used_ = n % 64;
  if (used_ > 0) std::memcpy(pending_, p + n - used_, used_);
}

std::string digest_context::finish() {
  uint64_t bits = length_ * 8;
  pending_[used_++] = 0x80;
  if (used_ > 56) {
    std::memset(pending_ + used_, 0, 64 - used_);
    blocks_(pending_, 1, state_);
    used_ = 0;
  }
  std::memset(pending_ + used_, 0, 56 - used_);
  for (int i = 0; i < 8; ++i)
    pending_[56 + i] = static_cast<unsigned char>(bits >> (big_endian_ ? 56 - 8 * i : 8 * i));
  blocks_(pending_, 1, state_);
  std::string digest;
  for (int w = 0; w < words_; ++w)
    for (int i = 0; i < 4; ++i) digest += static_cast<char>(state_[w] >> (big_endian_ ? 24 - 8 * i : 8 * i));
  return digest;
}

std::string digest_context::finish_with(const std::string& input) {
  add(input.data(), input.size());
  return finish();
}

}  // namespace base
