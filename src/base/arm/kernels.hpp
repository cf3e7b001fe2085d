// The arm64 kernels, each file compiled with its instruction set's flags (see
// CMakeLists.txt) and reached only through a chooser entry that needs that
// instruction set. Plain types only, as for the x86-64 kernels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace base::arm {

// sha.cpp (ARMv8 cryptography instructions): the block compressions of
// sha1.hpp and sha256.hpp.
void sha1_blocks_armv8(const unsigned char* p, std::size_t count, uint32_t* state);
void sha256_blocks_armv8(const unsigned char* p, std::size_t count, uint32_t* state);

// base64_neon.cpp: encodes 48-byte pieces and returns the count of bytes taken,
// having written 4/3 as many characters; decodes 64-character pieces (16
// groups), up to `pieces` of them, stopping at the first with anything but the
// 64 alphabet characters, and returns the count decoded, each having written 48
// bytes.
std::size_t base64_encode_neon(const unsigned char* in, std::size_t n, char* out);
std::size_t unbase64_pieces_neon(const unsigned char* in, std::size_t pieces, char* out);

}  // namespace base::arm
