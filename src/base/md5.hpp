// MD5 (RFC 1321): the 16-byte digest of bytes, streamed or of one string.
#pragma once

#include <string>

#include "base/chooser.hpp"
#include "base/digest_context.hpp"

namespace base {

struct md5_context : digest_context {
  md5_context();
};

std::string md5(const std::string& input);

// The block compressions: "portable" alone, which the compiler schedules well.
chooser<block_function>& md5_implementations();

}  // namespace base
