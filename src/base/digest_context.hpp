// The shape every digest shares: 64-byte blocks compressed into a few 32-bit
// state words, and a context that takes bytes in any number of pieces (start,
// add, finish), so the streamed and the whole-string digests cannot drift apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
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

// Compresses `count` 64-byte blocks at `p` into the state words.
using block_function = void (*)(const unsigned char* p, std::size_t count, uint32_t* state);

// The running digest of bytes added in any number of pieces. finish() pads the
// message (0x80, zeros up to 56 mod 64, the bit length in eight bytes) and gives
// the digest; the context is then spent.
template <block_function blocks, int words, bool big_endian>
struct digest_context {
  uint32_t state[words];
  uint64_t length = 0;        // bytes added
  unsigned char pending[64];  // the start of a block not yet full
  std::size_t used = 0;

  explicit digest_context(const uint32_t (&initial)[words]) { std::memcpy(state, initial, sizeof state); }

  void add(const void* data, std::size_t n) {
    if (n == 0) return;  // data may then be null, which memcpy must not see
    const unsigned char* p = static_cast<const unsigned char*>(data);
    length += n;
    if (used > 0) {
      std::size_t take = n < 64 - used ? n : 64 - used;
      std::memcpy(pending + used, p, take);
      used += take;
      p += take;
      n -= take;
      if (used < 64) return;
      blocks(pending, 1, state);
      used = 0;
    }
    // Whole blocks are compressed where they lie, without a copy.
    if (n >= 64) blocks(p, n / 64, state);
    used = n % 64;
    if (used > 0) std::memcpy(pending, p + n - used, used);
  }

  std::string finish() {
    uint64_t bits = length * 8;
    pending[used++] = 0x80;
    if (used > 56) {
      std::memset(pending + used, 0, 64 - used);
      blocks(pending, 1, state);
      used = 0;
    }
    std::memset(pending + used, 0, 56 - used);
    for (int i = 0; i < 8; ++i)
      pending[56 + i] = static_cast<unsigned char>(bits >> (big_endian ? 56 - 8 * i : 8 * i));
    blocks(pending, 1, state);
    std::string digest;
    for (uint32_t s : state)
      for (int i = 0; i < 4; ++i) digest += static_cast<char>(s >> (big_endian ? 24 - 8 * i : 8 * i));
    return digest;
  }
};

// The digest of one whole string.
template <class Context>
std::string digest_of(const std::string& input) {
  Context context;
  context.add(input.data(), input.size());
  return context.finish();
}

}  // namespace base
