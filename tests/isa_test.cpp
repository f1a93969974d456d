// SPDX-License-Identifier: MIT
// Which level is chosen. LUM_EXPECT_LEVEL names the level that must be, for processors whose best
// level is known: the emulated ones.
#include "simd/isa.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

namespace lum {
namespace {

std::string name_of(const Kernels* table) {
  for (unsigned level = 0; level < kLevelCount; ++level) {
    if (table == kernels_of(static_cast<Level>(level))) return kLevelNames[level];
  }
  return "none";
}

TEST(Isa, ChoosesTheLevelThatTheProcessorHas) {
  const char* expected = getenv("LUM_EXPECT_LEVEL");
  if (expected == nullptr) GTEST_SKIP() << "LUM_EXPECT_LEVEL is not set";
  EXPECT_EQ(name_of(&kernels()), expected);
}

TEST(Isa, ChoosesTheWidestLevelThereIs) {
  ASSERT_NE(kernels_of(Level::base), nullptr);
  for (unsigned level = kLevelCount; level-- > 0;) {
    if (const Kernels* table = kernels_of(static_cast<Level>(level))) {
      EXPECT_EQ(&kernels(), table)
          << kLevelNames[level] << " is there, " << name_of(&kernels()) << " was chosen";
      break;
    }
  }
}

}  // namespace
}  // namespace lum
