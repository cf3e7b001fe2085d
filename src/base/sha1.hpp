// SHA-1 (FIPS 180-4): the 20-byte digest of bytes, streamed or of one string.
#pragma once

#include <string>

#include "base/chooser.hpp"
#include "base/digest_context.hpp"

namespace base {

struct sha1_context : digest_context {
  sha1_context();
};

std::string sha1(const std::string& input);

// The block compressions: "sha-ni" (x86-64), "armv8" (arm64), "portable".
chooser<block_function>& sha1_implementations();

}  // namespace base
