// C-string escaping: the bytes as the body of one C string literal.
#pragma once

#include <cstddef>

#include "base/chooser.hpp"

namespace base {

// Escapes n bytes into out, which has room for 4 * n characters, and returns the
// count of characters written: a backslash and a letter for the named bytes
// (\" \\ \b \f \n \r \t \0), the byte itself for the rest of 32 to 126, a
// backslash, x and two lowercase digits for every other byte.
std::size_t c_escape_block(const unsigned char* in, std::size_t n, char* out);

// The implementations: "avx512", "avx2" (x86-64), "portable".
using c_escape_function = std::size_t (*)(const unsigned char* in, std::size_t n, char* out);
chooser<c_escape_function>& c_escape_implementations();

}  // namespace base
