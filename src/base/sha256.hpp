// SHA-256 (FIPS 180-4): the 32-byte digest of bytes, streamed or of one string.
#pragma once

#include <string>

#include "base/chooser.hpp"
#include "base/digest_context.hpp"

namespace base {

struct sha256_context : digest_context {
  sha256_context();
};

std::string sha256(const std::string& input);

// The block compressions: "sha-ni" (x86-64), "armv8" (arm64), "portable".
chooser<block_function>& sha256_implementations();

}  // namespace base
