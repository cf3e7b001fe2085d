// What this CPU offers beyond the portable code, probed once, at first use. The
// choosers (base/chooser.hpp) read it, and nothing else does.
#pragma once

namespace base::cpu {

struct features {
  bool sha_ni = false;        // x86-64: the SHA extensions, with SSE4.1
  bool avx2 = false;          // x86-64: AVX2, its registers saved by the kernel
  bool avx512 = false;        // x86-64: AVX-512 with byte permutes (BW, VBMI) and byte compress (VBMI2)
  bool armv8_sha1 = false;    // arm64: the ARMv8 cryptography instructions
  bool armv8_sha2 = false;
  bool neon = false;          // arm64: Advanced SIMD, with little-endian lanes
};

// The features of the CPU running vexa, probed at the first call.
const features& detected();

}  // namespace base::cpu
