// The kernels of each instruction set: the x86-64 ones in x86/, the arm64 ones in
// arm/, each file compiled with its instruction set's flags (see CMakeLists.txt)
// and reached only through a chooser entry that needs that instruction set.
// Plain types only, so that nothing in a kernel's file is code that other files
// might share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/byte_codes.hpp"

// The block compressions of digest.hpp: x86/sha.cpp (SHA extensions and
// SSE4.1), arm/sha.cpp (ARMv8 cryptography instructions).
namespace base::x86 {
void sha1_blocks_sha_ni(const unsigned char* p, std::size_t count, uint32_t* state);
void sha256_blocks_sha_ni(const unsigned char* p, std::size_t count, uint32_t* state);
}  // namespace base::x86
namespace base::arm {
void sha1_blocks_armv8(const unsigned char* p, std::size_t count, uint32_t* state);
void sha256_blocks_armv8(const unsigned char* p, std::size_t count, uint32_t* state);
}  // namespace base::arm

// Base64: x86/base64_avx2.cpp, x86/base64_avx512.cpp, arm/base64_neon.cpp. The
// encoders take pieces of 24 (AVX2, while 32 bytes remain to be read) or 48
// bytes (NEON) and return the count of bytes taken, having written 4/3 as many
// characters. The decoders take pieces of 8 (AVX2) or 16 groups (AVX-512,
// NEON), up to `pieces` of them, stop at the first with anything but the 64
// alphabet characters, and return the count decoded, each having written 3
// bytes a group.
namespace base::x86 {
std::size_t base64_encode_avx2(const unsigned char* in, std::size_t n, char* out);
std::size_t unbase64_pieces_avx2(const unsigned char* in, std::size_t pieces, char* out);
std::size_t unbase64_pieces_avx512(const unsigned char* in, std::size_t pieces, char* out);
}  // namespace base::x86
namespace base::arm {
std::size_t base64_encode_neon(const unsigned char* in, std::size_t n, char* out);
std::size_t unbase64_pieces_neon(const unsigned char* in, std::size_t pieces, char* out);
}  // namespace base::arm

namespace base::x86 {
// The byte-wise codes of escape and url_encode, by the style of `codes`
// (byte_codes.hpp): x86/encode_avx2.cpp, x86/encode_avx512.cpp.
std::size_t encode_bytes_avx2(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes);
std::size_t encode_bytes_avx512(const unsigned char* in, std::size_t n, char*& out, const byte_codes& codes);

// x86/url_decode_avx2.cpp and x86/url_decode_avx512.cpp: decode while 64 (128)
// bytes remain, "+" left as it is, and return the count of bytes taken, moving
// `out` past the bytes written.
std::size_t url_decode_avx2(const unsigned char* in, std::size_t n, char*& out);
std::size_t url_decode_avx512(const unsigned char* in, std::size_t n, char*& out);
}  // namespace base::x86
