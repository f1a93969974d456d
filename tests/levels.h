// SPDX-License-Identifier: MIT
// The levels as the tests go through them: with a stand-in for the one that few processors have.
#ifndef LUM_TESTS_LEVELS_H
#define LUM_TESTS_LEVELS_H

#include <stdlib.h>

#include <ostream>
#include <vector>

#include "simd/isa.h"

namespace lum {

// Level avx512 with its instructions emulated by those of avx2. Weak: not in every build.
extern const Kernels kernels_avx512_emulated __attribute__((weak));

namespace test {

struct TestedLevel {
  const char* name;
  const Kernels* kernels;  // null when this processor or this build does not have them
};
inline std::ostream& operator<<(std::ostream& out, const TestedLevel& level) {
  return out << level.name;
}

// The emulated level is there only where the real one is not, and not on processors that are
// emulated themselves, where LUM_EXPECT_LEVEL is set: that takes minutes and shows nothing new.
inline std::vector<TestedLevel> tested_levels() {
  std::vector<TestedLevel> levels;
  for (unsigned level = 0; level < kLevelCount; ++level) {
    levels.push_back({kLevelNames[level], kernels_of(static_cast<Level>(level))});
  }
  const bool emulate = kernels_of(Level::avx512) == nullptr && kernels_of(Level::avx2) != nullptr &&
                       getenv("LUM_EXPECT_LEVEL") == nullptr;
  levels.push_back({"avx512_emulated", emulate ? &kernels_avx512_emulated : nullptr});
  return levels;
}

}  // namespace test
}  // namespace lum

#endif
