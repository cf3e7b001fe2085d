// Base64 of RFC 4648 with padding and no line breaks, and a lenient decoder that
// never refuses input. The block functions do the work for whole strings and for
// files read in pieces alike.
#pragma once

#include <cstddef>
#include <string>

#include "base/chooser.hpp"

namespace base {

inline const char base64_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline const char base64_length_warning[] = "Warning: input string length not multiple of 4.";

// Encodes n bytes into out, which has room for (n + 2) / 3 * 4 characters, and
// returns that count. Only the last piece of a longer input may have a length
// that is not a multiple of 3.
std::size_t base64_encode(const unsigned char* in, std::size_t n, char* out);

// Decodes `groups` groups of four characters into out, which has room for 3 *
// groups + 1 bytes, and returns the count of bytes decoded (three a group, fewer
// after padding).
//
// Invalid characters (outside the alphabet) are neither refused nor skipped:
// they take part in the arithmetic with the value 65, and "=" counts as padding
// only in places 3 and 4, elsewhere as 64, so concatenated Base64 texts decode
// to the concatenated bytes. Only the low six bits of a value reach the output
// (the shifts push the rest out of each byte), so 64 acts as 0 and 65 as 1.
std::size_t unbase64_groups(const unsigned char* in, std::size_t groups, char* out);

std::string base64(const std::string& bytes);

// The text ends at its first zero byte, as a C string would. A length that is
// not a multiple of 4 is reported (puts of the warning), and the incomplete
// group dropped.
std::string unbase64(const std::string& text);

// The implementations: "avx512" (decoding only), "avx2" (x86-64), "neon"
// (arm64), "portable". The vector ones take whole pieces of plain alphabet, the
// portable code everything else.
using base64_function = std::size_t (*)(const unsigned char* in, std::size_t n, char* out);
chooser<base64_function>& base64_encode_implementations();
chooser<base64_function>& unbase64_implementations();  // n counts groups

}  // namespace base
