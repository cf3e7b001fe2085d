// Percent-encoding of bytes. With escape_reserved false the bytes kept are those
// of ECMAScript's encodeURI, with it true those of encodeURIComponent. The block
// functions do the work for whole strings and for files read in pieces alike.
#pragma once

#include <cstddef>
#include <string>

#include "base/chooser.hpp"

namespace base {

// Encodes n bytes into out, which has room for 4 * n characters, and returns the
// count of characters written: "%" and two uppercase digits for each byte not kept.
std::size_t url_encode_block(const unsigned char* in, std::size_t n, bool escape_reserved, char* out);

// Decodes n bytes into out, which has room for n bytes, and returns the count of
// bytes decoded; `used` is set to the count of input bytes taken. A "%" with
// fewer than two bytes after it stays as it is at the end of the input (`last`),
// and is otherwise left, with what follows it, for the next piece to complete.
//
// Escape digits are not checked: any byte goes through the digit arithmetic
// (x - 48, and 7 less above 64, 39 less above 96), and unsigned wrap-around
// keeps the low eight bits of a negative digit value.
std::size_t url_decode_block(const unsigned char* in, std::size_t n, bool last, bool plus_to_space, char* out,
                             std::size_t& used);

std::string url_encode(const std::string& text, bool escape_reserved);
std::string url_decode(const std::string& text, bool plus_to_space);

// The implementations: "avx512" (encoding only), "avx2" (x86-64), "portable".
using url_encode_function = std::size_t (*)(const unsigned char* in, std::size_t n, bool escape_reserved, char* out);
using url_decode_function = std::size_t (*)(const unsigned char* in, std::size_t n, bool last, bool plus_to_space,
                                            char* out, std::size_t& used);
chooser<url_encode_function>& url_encode_implementations();
chooser<url_decode_function>& url_decode_implementations();

}  // namespace base
