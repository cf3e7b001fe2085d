// The shape every digest shares: 64-byte blocks compressed into a few 32-bit
// state words, and a context that takes bytes in any number of pieces (add,
// then finish), so the streamed and the whole-string digests cannot drift apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace base {

inline uint32_t rotl32(uint32_t x, int n) { return (x << n) | (x >> (32 - n)); }
inline uint32_t rotr32(uint32_t x, int n) { return (x >> n) | (x << (32 - n)); }

// Words are assembled from single bytes, so the result does not depend on the
// machine's byte order or on the alignment of the buffer.
inline uint32_t read_le32(const unsigned char* p) {
  return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
inline uint32_t read_be32(const unsigned char* p) {
  return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | uint32_t(p[3]);
}

// Adds a block's working words to the state words, as every digest ends a block.
template <std::size_t N>
void add_words(uint32_t* state, const uint32_t (&words)[N]) {
  for (std::size_t i = 0; i < N; ++i) state[i] += words[i];
}

// Compresses `count` 64-byte blocks at `p` into the state words.
using block_function = void (*)(const unsigned char* p, std::size_t count, uint32_t* state);

// The running digest of bytes added in any number of pieces. finish() pads the
// message (0x80, zeros up to 56 mod 64, the bit length in eight bytes) and gives
// the digest's raw bytes; the context is then spent.
class digest_context {
 public:
  void add(const void* data, std::size_t n);
  std::string finish();
  // Adds `input` and finishes: the digest of one whole string.
  std::string finish_with(const std::string& input);

 protected:
  // `words` state words, at most 8, written out big- or little-endian.
  digest_context(block_function blocks, const uint32_t* initial, int words, bool big_endian);

 private:
  block_function blocks_;
  int words_;
  bool big_endian_;
  uint32_t state_[8];
  uint64_t length_ = 0;        // bytes added
  unsigned char pending_[64];  // the start of a block not yet full
  std::size_t used_ = 0;
};

}  // namespace base
