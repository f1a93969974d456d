// SPDX-License-Identifier: MIT
// The 2x2 demosaic of 8-bit, 12-bit packed and 16-bit mosaics, against the reference.
#include <gtest/gtest.h>

#include "lum/lum.h"
#include "reference.h"
#include "test_support.h"

namespace lum::test {
namespace {

using reference::Frame;

// The wide ones span several of the strips in which deep rows are worked on.
const Size kSizes[] = {{2, 2},   {2, 4},    {4, 2},    {6, 6},    {66, 10},
                       {130, 4}, {4098, 2}, {8196, 4}, {12290, 2}};

struct MosaicSource {
  const char* name;
  MosaicFunction function;
  size_t bits;  // of a source pixel
  std::vector<uint32_t> formats, refused;
  reference::Sampler (*sampler)(const uint8_t* src, size_t width);
};
const MosaicSource kMosaics[] = {
    {"LumRaw8ImageTransform",
     LumRaw8ImageTransform,
     8,
     {0, 1, 2, 3, 4, 5, 6},
     {7, 8, 9, 10, 11},
     reference::bytes_of},
    {"LumRaw12ImageTransform",
     LumRaw12ImageTransform,
     12,
     {0, 1, 2, 3, 4, 5, 7, 8},
     {6, 9, 10, 11},
     reference::packed12_high_bytes},
    {"LumRaw16ImageTransform",
     LumRaw16ImageTransform,
     16,
     {0, 1, 2, 3, 4, 5},
     {6, 7, 8, 9, 10, 11},
     [](const uint8_t* src, size_t width) {
       return reference::words_to_bytes(src, width, 0, true);
     }},
};

TEST(RawEntries, WriteWhatTheReferenceWrites) {
  unsigned kind = 0;
  for (const MosaicSource& source : kMosaics) {
    for (const Size size : kSizes) {
      for (const uint32_t pattern : kPatterns) {
        const Bytes src = random_bytes(size.width * source.bits / 8 * size.height, kind, kind);
        ++kind;
        const Frame frame = reference::bayer(size.width, size.height, pattern,
                                             source.sampler(src.data(), size.width));
        for (const uint32_t format : source.formats) {
          expect_mosaic(source.name, source.function, size, format, pattern, src,
                        [&](uint8_t* dst) {
                          reference::store_mosaic(format, frame, size.width, size.height, dst);
                        });
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

TEST(Raw16Ex, WritesWhatTheReferenceWrites) {
  unsigned kind = 0;
  for (const Size size : {Size{2, 2}, Size{4, 2}, Size{66, 6}, Size{8196, 2}}) {
    for (const uint32_t bits : {16u, 15u, 14u, 13u, 12u, 10u}) {
      for (const uint32_t endianness : {0u, 1u}) {
        for (const uint32_t alignment : {0u, 1u}) {
          for (const uint32_t pattern : kPatterns) {
            if (alignment == 0 && pattern != 1) continue;
            const LumBitDepthInfo depth = {0, alignment, bits, endianness, pattern};
            const unsigned shift = alignment == 0 ? 0 : 16 - bits;
            const Bytes src = random_bytes(2 * size.width * size.height, kind, kind);
            ++kind;
            const bool big = endianness != 0;
            const Frame shallow =
                reference::bayer(size.width, size.height, pattern,
                                 reference::words_to_bytes(src.data(), size.width, shift, big));
            const Frame deep =
                reference::bayer(size.width, size.height, pattern,
                                 reference::shifted_words(src.data(), size.width, shift, big));
            for (const uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u}) {
              expect_conversion(
                  describe("LumRaw16ImageTransformEx", size, format, pattern) + " bits " +
                      std::to_string(bits) + " endianness " + std::to_string(endianness) +
                      " alignment " + std::to_string(alignment),
                  src, size.width * size.height * reference::pixel_bytes(format),
                  [&](uint8_t* dst, const uint8_t* s) {
                    return LumRaw16ImageTransformEx(dst, s, static_cast<uint32_t>(size.width),
                                                    static_cast<uint32_t>(size.height), format,
                                                    &depth);
                  },
                  [&](uint8_t* dst) {
                    reference::store_mosaic(format, reference::is_deep(format) ? deep : shallow,
                                            size.width, size.height, dst);
                  });
            }
          }
        }
      }
    }
  }
}

// Pattern words above 3 are not refused: bits 1 and 0 are the parities of red's row and column.
TEST(Raw16Ex, ReadsParitiesFromOtherPatternWords) {
  const Bytes src = random_bytes(2 * 16 * 4, 5);
  for (const uint32_t word : {4u, 5u, 6u, 7u, 255u, 0xFFFFFFFDu}) {
    static const uint32_t kSamePattern[4] = {0, 2, 1, 3};  // of column + 2 row
    Bytes actual(16 * 4 * 3), expected(16 * 4 * 3);
    LumBitDepthInfo depth = {0, 1, 12, 0, word};
    ASSERT_EQ(LumRaw16ImageTransformEx(actual.data(), src.data(), 16, 4, 1, &depth), 0u);
    depth.bayerPattern = kSamePattern[word & 3];
    ASSERT_EQ(LumRaw16ImageTransformEx(expected.data(), src.data(), 16, 4, 1, &depth), 0u);
    EXPECT_EQ(actual, expected) << word;
  }
}

TEST(Raw8, HandWorkedValues) {
  struct Case {
    const char* what;
    uint32_t format, pattern;
    Bytes src, first_row;  // of a 4x2 frame; the second row repeats the first
  };
  const Case cases[] = {
      {"zero to UYVY", 6, 0, Bytes(8, 0), {128, 16, 128, 16, 128, 16, 128, 16}},
      {"255 to UYVY", 6, 1, Bytes(8, 255), {128, 235, 128, 235, 128, 235, 128, 235}},
      {"uniform to 601", 0, 2, Bytes(8, 77), {77, 77, 77, 77}},
      {"uniform to 709", 5, 3, Bytes(8, 77), {77, 77, 77, 77}},
      {"red 3 truncates in 601", 0, 0, {3, 0, 3, 0, 0, 0, 0, 0}, {0, 0, 0, 0}},
      {"red 3 rounds in 709", 5, 0, {3, 0, 3, 0, 0, 0, 0, 0}, {1, 1, 1, 1}},
      {"RGGB",
       3,
       0,
       {10, 21, 30, 40, 50, 60, 70, 80},
       {10, 35, 60, 30, 45, 60, 30, 55, 80, 30, 55, 80}},
      {"GBRG has red in row 1, column 0",
       3,
       1,
       {10, 21, 30, 40, 50, 60, 70, 80},
       {50, 35, 21, 70, 45, 21, 70, 55, 40, 70, 55, 40}},
      {"alpha stays",
       2,
       3,
       {1, 1, 1, 1, 1, 1, 1, 1},
       {1, 1, 1, 0xAA, 1, 1, 1, 0xAA, 1, 1, 1, 0xAA, 1, 1, 1, 0xAA}},
  };
  for (const Case& c : cases) {
    Bytes dst(2 * c.first_row.size(), 0xAA), expected = c.first_row;
    expected.insert(expected.end(), c.first_row.begin(), c.first_row.end());
    EXPECT_EQ(LumRaw8ImageTransform(dst.data(), c.src.data(), 4, 2, c.format, c.pattern), 0u);
    EXPECT_EQ(dst, expected) << c.what;
  }
}

TEST(RawDeep, HandWorkedValues) {
  // 12-bit packed to 16-bit mono: the 8-bit luma, unscaled; the nibbles do not count.
  const Bytes packed = {0x80, 0xFF, 0x80, 0x80, 0xFF, 0x80};
  Bytes dst(8, 0xEE);
  EXPECT_EQ(LumRaw12ImageTransform(dst.data(), packed.data(), 2, 2, 7, 0), 0u);
  EXPECT_EQ(dst, Bytes({0x80, 0, 0x80, 0, 0x80, 0, 0x80, 0}));
  // 12 low bits 0x0ABC: 0xAB of 8 bits, 0xABC0 of 16, in host order from either byte order.
  const Bytes big = {0x0A, 0xBC, 0x0A, 0xBC, 0x0A, 0xBC, 0x0A, 0xBC};
  LumBitDepthInfo depth = {0, 1, 12, 1, 0};
  EXPECT_EQ(LumRaw16ImageTransformEx(dst.data(), big.data(), 2, 2, 7, &depth), 0u);
  EXPECT_EQ(dst, Bytes({0xC0, 0xAB, 0xC0, 0xAB, 0xC0, 0xAB, 0xC0, 0xAB}));
  EXPECT_EQ(LumRaw16ImageTransformEx(dst.data(), big.data(), 2, 2, 0, &depth), 0u);
  EXPECT_EQ(Bytes(dst.begin(), dst.begin() + 4), Bytes({0xAB, 0xAB, 0xAB, 0xAB}));
}

TEST(RawEntries, RefuseInOrderAndWriteNothing) {
  using A = MosaicArgs;
  for (const MosaicSource& source : kMosaics) {
    std::vector<Refusal<A>> refusals = mosaic_refusals();
    // The pattern is the sixth argument, its code is the fifth's.
    refusals.push_back({"pattern 4", [](A& a) { a.pattern = 4; }, bad_argument(5)});
    refusals.push_back({"pattern 255", [](A& a) { a.pattern = 255; }, bad_argument(5)});
    refusals.push_back(bad_format<9, A>());
    expect_mosaic_refusals(source.function, refusals);
    const Bytes src(16, 1);
    Bytes dst(64, 0xEE);
    for (const uint32_t format : source.refused) {
      EXPECT_EQ(source.function(dst.data(), src.data(), 2, 2, format, 0), kNotImplemented)
          << source.name << " format " << format;
    }
    EXPECT_EQ(dst, Bytes(64, 0xEE)) << source.name;
  }
}

struct DepthArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t width, height, format;
  bool record;
  LumBitDepthInfo depth;
};

TEST(Raw16Ex, RefusesInOrderAndWritesNothing) {
  using A = DepthArgs;
  const Bytes src(256, 1);
  Bytes dst(512, 0xEE);
  expect_refusals<A>({dst.data(), src.data(), 4, 4, 9, true, {0, 1, 12, 0, 0}},
                     {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
                      {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
                      {"no record", [](A& a) { a.record = false; }, bad_argument(6)},
                      {"no width", [](A& a) { a.width = 0; }, bad_argument(3)},
                      {"no height", [](A& a) { a.height = 0; }, bad_argument(4)},
                      {"odd width", [](A& a) { a.width = 3; }, bad_argument(3)},
                      {"odd height", [](A& a) { a.height = 3; }, bad_argument(4)},
                      {"alignment 2", [](A& a) { a.depth.alignment = 2; }, kNotImplemented},
                      {"format 6", [](A& a) { a.format = 6; }, kNotImplemented},
                      {"format 10", [](A& a) { a.format = 10; }, kNotImplemented},
                      {"endianness 2", [](A& a) { a.depth.endianness = 2; }, kNotImplemented},
                      {"11 bits", [](A& a) { a.depth.bitsUsed = 11; }, kNotImplemented},
                      {"8 bits", [](A& a) { a.depth.bitsUsed = 8; }, kNotImplemented},
                      {"17 bits", [](A& a) { a.depth.bitsUsed = 17; }, kNotImplemented}},
                     dst, [](const A& a) {
                       return LumRaw16ImageTransformEx(a.dst, a.src, a.width, a.height, a.format,
                                                       a.record ? &a.depth : nullptr);
                     });
}

// Needs some 5 GB of memory: row offsets beyond 32 bits on both sides.
TEST(Raw8, FramesBeyondFourGigabytes) {
  if (!environment_flag("LUM_TEST_HUGE")) GTEST_SKIP() << "LUM_TEST_HUGE is not set";
  const size_t width = 65536, height = 65540;
  const Arena src(width * height), dst(width * height);
  const Bytes rows = random_bytes(4 * width, 1);
  std::copy(rows.begin(), rows.end(), src.begin() + (height - 4) * width);
  ASSERT_EQ(LumRaw8ImageTransform(dst.begin(), src.begin(), width, height, 0, 0), 0u);
  Bytes expected(4 * width);
  reference::store_mosaic(0, reference::bayer(width, 4, 0, reference::bytes_of(rows.data(), width)),
                          width, 4, expected.data());
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), dst.begin() + (height - 4) * width));
  EXPECT_TRUE(std::all_of(dst.begin(), dst.begin() + 4 * width, [](uint8_t v) { return v == 0; }))
      << "the end of the frame was written to its start";
}

}  // namespace
}  // namespace lum::test
