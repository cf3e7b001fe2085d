// The three digests the commands offer, of bytes streamed or of one string; each
// gives the raw digest bytes (16 for MD5, 20 for SHA-1, 32 for SHA-256), which
// base::hex turns into text. MD5 is RFC 1321's, SHA-1 and SHA-256 FIPS 180-4's.
#pragma once

#include <string>

#include "base/chooser.hpp"
#include "base/digest_context.hpp"

namespace base {

struct md5_context : digest_context {
  md5_context();
};
struct sha1_context : digest_context {
  sha1_context();
};
struct sha256_context : digest_context {
  sha256_context();
};

std::string md5(const std::string& input);
std::string sha1(const std::string& input);
std::string sha256(const std::string& input);

// The block compressions: "sha-ni" (x86-64) and "armv8" (arm64) for SHA-1 and
// SHA-256, and "portable" for all three.
chooser<block_function>& md5_implementations();
chooser<block_function>& sha1_implementations();
chooser<block_function>& sha256_implementations();

// The portable compressions (md5.cpp, sha1.cpp, sha256.cpp).
void md5_blocks_portable(const unsigned char* p, std::size_t count, uint32_t* state);
void sha1_blocks_portable(const unsigned char* p, std::size_t count, uint32_t* state);
void sha256_blocks_portable(const unsigned char* p, std::size_t count, uint32_t* state);

}  // namespace base
