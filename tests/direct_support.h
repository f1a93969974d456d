// SPDX-License-Identifier: MIT
// What the tests of planes, depth and geometry share.
#ifndef LUM_TESTS_DIRECT_SUPPORT_H
#define LUM_TESTS_DIRECT_SUPPORT_H

#include "convert/direct.h"
#include "levels.h"
#include "lum/lum.h"
#include "reference_direct.h"
#include "test_support.h"

namespace lum::test {

using reference::kPackedGroups;
using reference::sample;

// Calls f(kernels, name) for each level that can be tested here.
template <class F>
void at_every_level(const F& f) {
  for (const TestedLevel& level : tested_levels()) {
    if (level.kernels == nullptr) continue;
    f(*level.kernels, std::string(level.name));
    if (::testing::Test::HasFatalFailure()) return;
  }
}

inline uint32_t crc(const Bytes& bytes) { return reference::crc32(bytes.data(), bytes.size()); }

// The inputs of the known answers: bytes 7 i, and the words 16 A + 5.
inline Bytes ramp7(size_t n) {
  Bytes out;
  for (size_t i = 0; i < n; ++i) out.push_back(static_cast<uint8_t>(7 * i));
  return out;
}
inline Bytes words_w() {
  Bytes out;
  for (const uint8_t a : frame_a()) {
    const int w = 16 * a + 5;
    out.push_back(static_cast<uint8_t>(w));
    out.push_back(static_cast<uint8_t>(w >> 8));
  }
  return out;
}

inline LumBitDepthInfo depth(uint32_t alignment, uint32_t bits, uint32_t endianness) {
  LumBitDepthInfo info = {};
  info.alignment = alignment;
  info.bitsUsed = bits;
  info.endianness = endianness;
  return info;
}

}  // namespace lum::test

#endif
