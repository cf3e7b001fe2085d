// C-string escaping with AVX2, for CPUs that have it (base::cpu tells): the bytes
// that need an escape are found 32 at a time.
#pragma once

#include "base/x86/runs.hpp"

#if defined(VEXA_X86_AVX2_RUNS)
namespace base::x86 {

// The mask of the bytes outside 32 to 126 and of '"' and '\'.
struct c_escaped {
  __attribute__((target("avx2"))) uint32_t operator()(__m256i c) const {
    // Below 32 as signed bytes takes in 128 to 255 too.
    __m256i escaped = _mm256_or_si256(
        _mm256_or_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(32), c), _mm256_cmpeq_epi8(c, _mm256_set1_epi8(127))),
        _mm256_or_si256(_mm256_cmpeq_epi8(c, _mm256_set1_epi8('"')), _mm256_cmpeq_epi8(c, _mm256_set1_epi8('\\'))));
    return static_cast<uint32_t>(_mm256_movemask_epi8(escaped));
  }
};

}  // namespace base::x86
#endif
