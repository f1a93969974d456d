// SPDX-License-Identifier: MIT
#include "simd/isa.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace lum {

extern const Kernels kernels_base;

#if defined(__x86_64__)

extern const Kernels kernels_sse41;
extern const Kernels kernels_avx2;
extern const Kernels kernels_avx512;

namespace {

enum Feature : uint32_t {
  kSse2 = 1 << 0,
  kSsse3 = 1 << 1,
  kSse41 = 1 << 2,
  kAvx2 = 1 << 3,
  kAvx512 = 1 << 4,
};

struct LevelEntry {
  const Kernels* kernels;
  uint32_t needs;
};
constexpr LevelEntry kLevels[kLevelCount] = {
    {&kernels_base, 0},
    {&kernels_sse41, kSsse3 | kSse41},
    {&kernels_avx2, kAvx2 | kSse41 | kSsse3},
    {&kernels_avx512, kAvx512 | kAvx2 | kSse41 | kSsse3},
};

}  // namespace

// __builtin_cpu_supports() looks at the processor's bits and at whether the operating system saves
// the registers they need.
uint32_t processor_features() {
  uint32_t features = 0;
  if (__builtin_cpu_supports("sse2")) features |= kSse2;
  if (__builtin_cpu_supports("ssse3")) features |= kSsse3;
  if (__builtin_cpu_supports("sse4.1")) features |= kSse41;
  if (__builtin_cpu_supports("avx") && __builtin_cpu_supports("avx2")) features |= kAvx2;
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni")) {
    features |= kAvx512;
  }
  return features;
}

uint32_t build_features() { return kSse2 | kSsse3 | kSse41 | kAvx2 | kAvx512; }

const Kernels* kernels_of(Level level) {
  const LevelEntry& entry = kLevels[static_cast<unsigned>(level)];
  return (processor_features() & entry.needs) == entry.needs ? entry.kernels : nullptr;
}

#else

uint32_t processor_features() { return 0; }
uint32_t build_features() { return 0; }
const Kernels* kernels_of(Level level) { return level == Level::base ? &kernels_base : nullptr; }

#endif

namespace {

struct Caches {
  size_t second = 0;   // bytes of the second level
  size_t largest = 0;  // bytes of the largest
  bool intel = false;
};

Caches read_caches() {
  Caches caches;
#if defined(__x86_64__)
  // Both makers describe one cache a sub-leaf in the same way, on leaves of their own.
  constexpr unsigned kIntelLeaf = 0x4, kLeaves[] = {kIntelLeaf, 0x8000001D};
  for (const unsigned leaf : kLeaves) {
    unsigned eax, ebx, ecx, edx;
    for (unsigned i = 0; __get_cpuid_count(leaf, i, &eax, &ebx, &ecx, &edx) != 0; ++i) {
      const unsigned type = eax & 0x1F, level = (eax >> 5) & 0x7;
      constexpr unsigned kNone = 0, kInstructions = 2;
      if (type == kNone) break;
      if (type == kInstructions) continue;
      const size_t line = (ebx & 0xFFF) + 1, partitions = ((ebx >> 12) & 0x3FF) + 1;
      const size_t bytes = ((ebx >> 22) + size_t{1}) * partitions * line * (ecx + size_t{1});
      if (level == 2) caches.second = bytes;
      if (bytes > caches.largest) caches.largest = bytes;
      caches.intel = leaf == kIntelLeaf;
    }
  }
#endif
  return caches;
}

size_t bytes_kept_in_cache() {
  const Caches caches = read_caches();
  if (caches.largest == 0) return SIZE_MAX;
  constexpr size_t kLargeSecondLevel = 1 << 20;
  const bool avx512 = kernels_of(Level::avx512) != nullptr;
  if (caches.intel && avx512 && caches.second >= kLargeSecondLevel) return caches.second / 4 * 5;
  return caches.largest / 2;
}

}  // namespace

size_t kept_in_cache() {
  static const size_t bytes = bytes_kept_in_cache();
  return bytes;
}

const Kernels& kernels() {
  static const Kernels* const best = [] {
    const Kernels* found = &kernels_base;
    for (unsigned level = 0; level < kLevelCount; ++level) {
      if (const Kernels* k = kernels_of(static_cast<Level>(level))) found = k;
    }
    return found;
  }();
  return *best;
}

}  // namespace lum
