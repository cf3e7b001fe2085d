// The x86-64 kernels, each file compiled with its instruction set's flags (see
// CMakeLists.txt) and reached only through a chooser entry that needs that
// instruction set. Plain types only, so that nothing in a kernel's file is
// code that other files might share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/byte_codes.hpp"

namespace base::x86 {

// sha.cpp (SHA extensions and SSE4.1): the block compressions of sha1.hpp and sha256.hpp.
void sha1_blocks_sha_ni(const unsigned char* p, std::size_t count, uint32_t* state);
void sha256_blocks_sha_ni(const unsigned char* p, std::size_t count, uint32_t* state);

// base64_avx2.cpp: encodes 24-byte pieces while 32 bytes remain to be read and
// returns the count of bytes taken, having written 4/3 as many characters;
// decodes 32-character pieces (8 groups), up to `pieces` of them, stopping at
// the first with anything but the 64 alphabet characters, and returns the
// count decoded, each having written 24 bytes.
std::size_t base64_encode_avx2(const unsigned char* in, std::size_t n, char* out);
std::size_t unbase64_pieces_avx2(const unsigned char* in, std::size_t pieces, char* out);

// base64_avx512.cpp: decodes as unbase64_pieces_avx2 does, 64-character pieces
// (16 groups) each writing 48 bytes.
std::size_t unbase64_pieces_avx512(const unsigned char* in, std::size_t pieces, char* out);

// encode_avx2.cpp and encode_avx512.cpp: escape and url_encode (byte_codes.hpp).
std::size_t c_escape_avx2(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes);
std::size_t url_encode_avx2(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes);
std::size_t c_escape_avx512(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes);
std::size_t url_encode_avx512(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes);

// url_decode_avx2.cpp: decodes while 64 bytes remain, "+" left as it is, and
// returns the count of bytes taken, moving `out` past the bytes written.
std::size_t url_decode_avx2(const unsigned char* in, std::size_t n, char*& out);

}  // namespace base::x86
