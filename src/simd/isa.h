// SPDX-License-Identifier: MIT
// Instruction-set levels: which there are, which the processor has, which table of kernels to use.
#ifndef LUM_SIMD_ISA_H
#define LUM_SIMD_ISA_H

#include <stdint.h>

#include "simd/kernel_table.h"

namespace lum {

enum class Level : unsigned { base, sse41, avx2, avx512 };
constexpr unsigned kLevelCount = 4;
constexpr const char* kLevelNames[kLevelCount] = {"base", "sse41", "avx2", "avx512"};

// Feature masks as LumGetTechnoInfo reports them: bit 0 SSE2, 1 SSSE3, 2 SSE4.1, 3 AVX2, 4 AVX-512
// as the avx512 level needs it, 8 NEON.
uint32_t processor_features();
uint32_t build_features();

// The table of a level, or null when this processor or this build does not have it. For tests and
// the benchmark; the library itself calls kernels().
const Kernels* kernels_of(Level level);

// The table of the best level that the processor has. Chosen on the first call, from any thread.
const Kernels& kernels();

// What a conversion writes stays in the processor's caches while it reads and writes no more bytes
// than this: half the last-level cache. That of Intel's servers is spread over all cores and takes
// stores more slowly than memory does; there it is the second level and a quarter. They are told by
// the avx512 level and a second level of at least 1 MiB, which some laptops have as well. The
// largest number where the processor reports no cache. Read once.
size_t kept_in_cache();

}  // namespace lum

#endif
