// SPDX-License-Identifier: MIT
// Packed samples to words and words to bytes: known answers, the reference, refusals.
#include <gtest/gtest.h>

#include "direct_support.h"

namespace lum::test {
namespace {

TEST(DirectUnpack, KnownAnswers) {
  const uint32_t expected[2][6] = {
      {0x00CF0AA1, 0xFE06C465, 0xDAAE89A1, 0x0B39BC2A, 0xFBEC0075, 0x2FC220A9},
      {0x16559523, 0xB1DD7217, 0xAB1CD372, 0xC98DB19D, 0x6E815FD9, 0x71D6E374}};
  const Bytes src = ramp7(240);
  for (uint32_t packing = 0; packing < 6; ++packing) {
    const uint32_t n =
        static_cast<uint32_t>(240 / kPackedGroups[packing].bytes) * kPackedGroups[packing].pixels;
    for (uint32_t other = 0; other < 2; ++other) {
      const LumBitDepthInfo info = depth(1 - other, 0, other);
      Bytes dst(2 * n);
      reference::unpack(dst.data(), src.data(), n, packing, info);
      EXPECT_EQ(crc(dst), expected[other][packing]) << "the reference, packing " << packing;
      EXPECT_EQ(LumUnpackTo16(dst.data(), src.data(), n, packing, &info), 0u);
      EXPECT_EQ(crc(dst), expected[other][packing]) << "packing " << packing;
    }
  }
}

TEST(DirectUnpack, HandWorkedValues) {
  const Bytes src = {0xAB, 0xCD, 0xEF, 0x12, 0x34};
  const std::vector<int> expected[] = {{0xABD, 0xEFC}, {0x2AD, 0x3BC},
                                       {0xDAB, 0xEFC}, {0x1AB, 0x3F3, 0x12E, 0x0D0},
                                       {0xABF, 0xCDE}, {0x2AC, 0x335, 0x3BF, 0x048}};
  const LumBitDepthInfo info = depth(1, 0, 0);
  for (uint32_t packing = 0; packing < 6; ++packing) {
    Bytes dst(8);
    EXPECT_EQ(LumUnpackTo16(dst.data(), src.data(), kPackedGroups[packing].pixels, packing, &info),
              0u);
    for (size_t i = 0; i < expected[packing].size(); ++i) {
      EXPECT_EQ(sample(dst.data(), i, 2), expected[packing][i]) << "packing " << packing;
    }
  }
}

TEST(DirectUnpack, WritesWhatTheReferenceWritesAtEveryLevel) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    unsigned kind = 0;
    for (uint32_t packing = 0; packing < 6; ++packing) {
      for (const uint32_t n :
           {2u, 4u, 6u, 8u, 12u, 16u, 30u, 32u, 36u, 60u, 64u, 66u, 68u, 128u, 132u, 1004u}) {
        if (n % kPackedGroups[packing].pixels != 0) continue;
        for (uint32_t variant = 0; variant < 4; ++variant, ++kind) {
          const LumBitDepthInfo info = depth(variant & 1, 0, variant >> 1);
          const Bytes src = random_bytes(
              n / kPackedGroups[packing].pixels * kPackedGroups[packing].bytes, kind, kind);
          expect_conversion(
              level + " packing " + std::to_string(packing) + " count " + std::to_string(n) +
                  " variant " + std::to_string(variant),
              src, 2 * n,
              [&](uint8_t* dst, const uint8_t* s) {
                unpack_to_16(kernels, dst, s, n, packing,
                             info.alignment == 0 ? 16 - kPackedGroups[packing].bits : 0,
                             info.endianness);
                return 0u;
              },
              [&](uint8_t* dst) { reference::unpack(dst, src.data(), n, packing, info); });
          if (HasFatalFailure()) return;
        }
      }
    }
  });
}

struct DepthArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t count, packing;
  LumBitDepthInfo info;
  bool no_info;
};
TEST(DirectUnpack, RefusesInOrder) {
  using A = DepthArgs;
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  expect_refusals<A>({dst.data(), src.data(), 4, 3, depth(1, 0, 0), false},
                     {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
                      {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
                      {"no pixels", [](A& a) { a.count = 0; }, bad_argument(3)},
                      {"packing", [](A& a) { a.packing = 6; }, kNotImplemented},
                      {"part of a group", [](A& a) { a.count = 6; }, bad_argument(3)},
                      {"no record", [](A& a) { a.no_info = true; }, bad_argument(5)},
                      {"alignment", [](A& a) { a.info.alignment = 2; }, kNotImplemented},
                      {"byte order", [](A& a) { a.info.endianness = 2; }, kNotImplemented}},
                     dst, [](const A& a) {
                       return LumUnpackTo16(a.dst, a.src, a.count, a.packing,
                                            a.no_info ? nullptr : &a.info);
                     });
  const LumBitDepthInfo info = depth(0, 0, 0);
  EXPECT_EQ(LumUnpackTo16(dst.data(), src.data(), 3, 0, &info), bad_argument(3));
}

// ---- Words to bytes
TEST(DirectSamples16To8, KnownAnswers) {
  const Bytes w = words_w();
  const std::pair<LumBitDepthInfo, uint32_t> cases[] = {
      {depth(1, 12, 0), 0x5C14457C}, {depth(1, 10, 0), 0xEF0EEC8E}, {depth(0, 0, 0), 0xB4EDEF20}};
  for (const auto& [info, expected] : cases) {
    Bytes dst(w.size() / 2), in_place = w;
    reference::words_to_8(dst.data(), w.data(), dst.size(), info);
    EXPECT_EQ(crc(dst), expected) << "the reference";
    EXPECT_EQ(LumSamples16To8(dst.data(), w.data(), static_cast<uint32_t>(dst.size()), &info), 0u);
    EXPECT_EQ(crc(dst), expected);
  }
}

TEST(DirectSamples16To8, WritesWhatTheReferenceWritesAtEveryLevelAndInPlace) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    unsigned kind = 0;
    for (uint32_t bits = 7; bits <= 16; ++bits) {  // 7 stands for alignment 0
      for (uint32_t endianness = 0; endianness < 2; ++endianness) {
        for (const uint32_t n :
             {1u, 2u, 7u, 8u, 9u, 16u, 31u, 33u, 63u, 64u, 65u, 96u, 127u, 129u, 1000u}) {
          const LumBitDepthInfo info = depth(bits == 7 ? 0 : 1, bits, endianness);
          const uint32_t shift = bits == 7 ? 8 : bits - 8;
          const Bytes src = random_bytes(2 * n, kind, kind);
          ++kind;
          const std::string label =
              level + " bits " + std::to_string(bits) + " count " + std::to_string(n);
          expect_conversion(
              label, src, n,
              [&](uint8_t* dst, const uint8_t* s) {
                samples_16_to_8(kernels, dst, s, n, shift, endianness);
                return 0u;
              },
              [&](uint8_t* dst) { reference::words_to_8(dst, src.data(), n, info); });
          if (HasFatalFailure()) return;
          Bytes image = src, expected = src;
          reference::words_to_8(expected.data(), src.data(), n, info);
          samples_16_to_8(kernels, image.data(), image.data(), n, shift, endianness);
          ASSERT_EQ(image, expected) << label << " in place";
        }
      }
    }
  });
}

TEST(DirectSamples16To8, RefusesInOrder) {
  using A = DepthArgs;
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  expect_refusals<A>({dst.data(), src.data(), 4, 0, depth(1, 12, 0), false},
                     {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
                      {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
                      {"no samples", [](A& a) { a.count = 0; }, bad_argument(3)},
                      {"no record", [](A& a) { a.no_info = true; }, bad_argument(4)},
                      {"alignment", [](A& a) { a.info.alignment = 2; }, kNotImplemented},
                      {"few bits", [](A& a) { a.info.bitsUsed = 7; }, kNotImplemented},
                      {"many bits", [](A& a) { a.info.bitsUsed = 17; }, kNotImplemented},
                      {"byte order", [](A& a) { a.info.endianness = 2; }, kNotImplemented}},
                     dst, [](const A& a) {
                       return LumSamples16To8(a.dst, a.src, a.count, a.no_info ? nullptr : &a.info);
                     });
  const LumBitDepthInfo top = depth(0, 99, 0);
  EXPECT_EQ(LumSamples16To8(dst.data(), src.data(), 4, &top), 0u) << "bitsUsed is not read";
}

}  // namespace
}  // namespace lum::test
