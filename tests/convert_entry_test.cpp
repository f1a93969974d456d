// SPDX-License-Identifier: MIT
// The mono and RGB-family entry points and the two that move rows, against the reference.
#include <gtest/gtest.h>

#include "convert/mono.h"
#include "lum/lum.h"
#include "reference.h"
#include "test_support.h"

namespace lum::test {
namespace {

using reference::Frame;

constexpr uint32_t kCounts[] = {1, 2, 3, 7, 8, 15, 16, 17, 31, 33, 63, 64, 65, 127, 130, 4100};

// Destination bytes that a flat conversion may touch: the last Y1 of an odd UYVY run does not
// count.
size_t flat_bytes(uint32_t format, size_t count) {
  return format == 6 && count % 2 != 0 ? 2 * count + 1 : count * reference::pixel_bytes(format);
}

struct FlatSource {
  const char* name;
  FlatFunction function;
  size_t group_pixels, group_bytes;
  std::vector<uint32_t> formats;
  Frame (*read)(const uint8_t* src, size_t count);
  bool copies_words;  // to MONO16 the source bytes are copied as they are
};

const FlatSource kFlatSources[] = {
    {"LumY8ImageTransform",
     LumY8ImageTransform,
     1,
     1,
     {0, 1, 2, 3, 4, 5, 6},
     reference::mono8,
     false},
    {"LumY12ImageTransform",
     LumY12ImageTransform,
     2,
     3,
     {0, 1, 2, 3, 4, 5},
     [](const uint8_t* s, size_t n) { return reference::mono12_packed(s, n); },
     false},
    {"LumY16ImageTransform",
     LumY16ImageTransform,
     1,
     2,
     {0, 1, 2, 3, 4, 5, 7, 8},
     [](const uint8_t* s, size_t n) { return reference::mono16_tinted(s, n, false); },
     true},
    {"y16_little_endian",
     y16_little_endian_image_transform,
     1,
     2,
     {0, 1, 2, 3, 4, 5, 7, 8},
     [](const uint8_t* s, size_t n) { return reference::mono16_tinted(s, n, true); },
     true},
    {"LumRGB8ImageTransform",
     LumRGB8ImageTransform,
     1,
     3,
     {0, 1, 2, 3, 4, 5},
     [](const uint8_t* s, size_t n) { return reference::colour(s, n, "RGB"); },
     false},
    {"LumBGR8ImageTransform",
     LumBGR8ImageTransform,
     1,
     3,
     {0, 1, 2, 3, 4, 5},
     [](const uint8_t* s, size_t n) { return reference::colour(s, n, "BGR"); },
     false},
    {"LumRGBA8ImageTransform",
     LumRGBA8ImageTransform,
     1,
     4,
     {0, 1, 2, 3, 4, 5},
     [](const uint8_t* s, size_t n) { return reference::colour(s, n, "RGBA"); },
     false},
    {"LumBGRA8ImageTransform",
     LumBGRA8ImageTransform,
     1,
     4,
     {0, 1, 2, 3, 4, 5},
     [](const uint8_t* s, size_t n) { return reference::colour(s, n, "BGRA"); },
     false},
};

TEST(FlatEntries, WriteWhatTheReferenceWrites) {
  unsigned kind = 0;
  for (const FlatSource& source : kFlatSources) {
    for (const uint32_t format : source.formats) {
      for (const uint32_t count : kCounts) {
        if (count % source.group_pixels != 0) continue;
        const size_t bytes = count / source.group_pixels * source.group_bytes;
        const Bytes src = random_bytes(bytes, count, kind++);
        expect_conversion(
            std::string(source.name) + " count " + std::to_string(count) + " format " +
                std::to_string(format),
            src, flat_bytes(format, count),
            [&](uint8_t* dst, const uint8_t* s) { return source.function(dst, s, count, format); },
            [&](uint8_t* dst) {
              if (source.copies_words && format >= 7) {
                std::copy(src.begin(), src.end(), dst);
              } else {
                reference::store(format, source.read(src.data(), count).data(), count, dst);
              }
            });
      }
    }
  }
}

TEST(Y16Ex, WritesWhatTheReferenceWrites) {
  unsigned kind = 0;
  for (const uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u}) {
    for (const uint32_t bits : {16u, 15u, 14u, 13u, 12u, 10u}) {
      for (const uint32_t endianness : {0u, 1u}) {
        for (const uint32_t alignment : {0u, 1u}) {
          const LumBitDepthInfo depth = {77, alignment, bits, endianness, 99};
          const unsigned shift = alignment == 0 ? 0 : 16 - bits;
          for (const uint32_t count : {1u, 16u, 67u, 1030u}) {
            const Bytes src = random_bytes(2 * count, count, kind++);
            expect_conversion(
                "LumY16ImageTransformEx format " + std::to_string(format) + " bits " +
                    std::to_string(bits) + " endianness " + std::to_string(endianness),
                src, count * reference::pixel_bytes(format),
                [&](uint8_t* dst, const uint8_t* s) {
                  return LumY16ImageTransformEx(dst, s, count, format, &depth);
                },
                [&](uint8_t* dst) {
                  const Frame frame = reference::mono16(src.data(), count, shift, endianness != 0,
                                                        reference::is_deep(format));
                  reference::store(format, frame.data(), count, dst);
                });
          }
        }
      }
    }
  }
}

// Hand-worked values.
struct Worked {
  const char* what;
  FlatFunction function;
  uint32_t count, format;
  Bytes src, expected;  // 0xEE in the destination beforehand
};

uint32_t y16_null_depth(uint8_t* dst, const uint8_t* src, uint32_t count, uint32_t format) {
  return LumY16ImageTransformEx(dst, src, count, format, nullptr);
}
uint32_t y16_low_12_bits(uint8_t* dst, const uint8_t* src, uint32_t count, uint32_t format) {
  const LumBitDepthInfo depth = {0, 1, 12, 0, 0};
  return LumY16ImageTransformEx(dst, src, count, format, &depth);
}

TEST(FlatEntries, HandWorkedValues) {
  const Worked cases[] = {
      {"mono 8 to UYVY has zero chroma", LumY8ImageTransform, 2, 6, {7, 9}, {0, 7, 0, 9}},
      {"an odd mono 8 run leaves Y1",
       LumY8ImageTransform,
       3,
       6,
       {7, 9, 11},
       {0, 7, 0, 9, 0, 11, 0, 0xEE}},
      {"mono 8 leaves alpha", LumY8ImageTransform, 2, 2, {7, 9}, {7, 7, 7, 0xEE, 9, 9, 9, 0xEE}},
      {"packed nibbles are dropped", LumY12ImageTransform, 2, 0, {0xAB, 0xFF, 0xCD}, {0xAB, 0xCD}},
      {"no packed pixels", LumY12ImageTransform, 0, 0, {1}, {0xEE}},
      {"the tint stops at 255", LumY16ImageTransform, 1, 1, {0xFF, 0xC0}, {255, 255, 255}},
      {"both tint bits", LumY16ImageTransform, 1, 1, {0x10, 0xC0}, {0x11, 0x10, 0x11}},
      {"red tint, BGR", LumY16ImageTransform, 1, 1, {0x10, 0x80}, {0x10, 0x10, 0x11}},
      {"blue tint, RGB", LumY16ImageTransform, 1, 3, {0x10, 0x40}, {0x10, 0x10, 0x11}},
      {"luma of a tint truncates", LumY16ImageTransform, 1, 0, {0x10, 0x80}, {16}},
      {"mono 16 is copied", LumY16ImageTransform, 1, 7, {0x12, 0x34}, {0x12, 0x34}},
      {"the low byte is the next pixel's",
       y16_little_endian_image_transform,
       2,
       1,
       {0x00, 0x10, 0x80, 0x20},
       {0x10, 0x10, 0x11, 0x20, 0x20, 0x20}},
      {"an own low byte does not tint",
       y16_little_endian_image_transform,
       1,
       1,
       {0xC0, 0x10},
       {0x10, 0x10, 0x10}},
      {"no record: big-endian, 16 bits", y16_null_depth, 1, 7, {0x12, 0x34}, {0x34, 0x12}},
      {"no record: top byte", y16_null_depth, 1, 0, {0x12, 0x34}, {0x12}},
      {"12 low bits to 8", y16_low_12_bits, 1, 0, {0xBC, 0x0A}, {0xAB}},
      {"12 low bits to 16", y16_low_12_bits, 1, 7, {0xBC, 0x0A}, {0xC0, 0xAB}},
      {"bits above wrap, no clamp", y16_low_12_bits, 1, 0, {0x23, 0xF1}, {0x12}},
      {"bits above are shifted out",
       y16_low_12_bits,
       1,
       9,
       {0x23, 0xF1},
       {0x30, 0x12, 0x30, 0x12, 0x30, 0x12}},
      {"BGRA luma 601", LumBGRA8ImageTransform, 1, 0, {10, 20, 30, 40}, {21}},
      {"BGRA luma 709", LumBGRA8ImageTransform, 1, 5, {10, 20, 30, 40}, {21}},
      {"red 3 truncates to 0 in 601", LumRGB8ImageTransform, 1, 0, {3, 0, 0}, {0}},
      {"red 3 rounds to 1 in 709", LumRGB8ImageTransform, 1, 5, {3, 0, 0}, {1}},
      {"white stays white", LumRGB8ImageTransform, 1, 0, {255, 255, 255}, {255}},
      {"RGBA to BGR", LumRGBA8ImageTransform, 1, 1, {1, 2, 3, 4}, {3, 2, 1}},
      {"RGBA to BGRA takes alpha along", LumRGBA8ImageTransform, 1, 2, {1, 2, 3, 4}, {3, 2, 1, 4}},
      {"RGB to BGRA leaves alpha", LumRGB8ImageTransform, 1, 2, {1, 2, 3}, {3, 2, 1, 0xEE}},
      {"no pixels", LumBGR8ImageTransform, 0, 1, {1}, {0xEE}},
  };
  for (const Worked& c : cases) {
    Bytes dst(c.expected.size(), 0xEE);
    EXPECT_EQ(c.function(dst.data(), c.src.data(), c.count, c.format), 0u) << c.what;
    EXPECT_EQ(dst, c.expected) << c.what;
  }
}

TEST(FlatEntries, RefuseInOrderAndWriteNothing) {
  struct Case {
    FlatFunction function;
    std::vector<Refusal<FlatArgs>> refusals;
  };
  const Refusal<FlatArgs> none = bad_count<0>(), odd = bad_count<3>();
  const std::vector<Refusal<FlatArgs>> words = {kFlatNoDst,      kFlatNoSrc,      none,
                                                bad_format<6>(), bad_format<9>(), bad_format<10>(),
                                                bad_format<11>()};
  const std::vector<Refusal<FlatArgs>> colours = {kFlatNoDst, kFlatNoSrc, bad_format<6>(),
                                                  bad_format<7>(), bad_format<0xFFFFFFFF>()};
  const Case cases[] = {
      {LumY8ImageTransform, {kFlatNoDst, kFlatNoSrc, none, bad_format<7>(), bad_format<10>()}},
      {LumY12ImageTransform, {kFlatNoDst, kFlatNoSrc, odd, bad_format<6>(), bad_format<7>()}},
      {LumY16ImageTransform, words},
      {y16_little_endian_image_transform, words},
      {LumRGB8ImageTransform, colours},
      {LumBGR8ImageTransform, colours},
      {LumRGBA8ImageTransform, colours},
      {LumBGRA8ImageTransform, colours},
  };
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  for (const Case& c : cases) {
    std::fill(dst.begin(), dst.end(), uint8_t{0xEE});
    expect_refusals<FlatArgs>(
        {dst.data(), src.data(), 4, 0}, c.refusals, dst,
        [&](const FlatArgs& a) { return c.function(a.dst, a.src, a.count, a.format); });
  }
}

struct DepthArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t count, format;
  LumBitDepthInfo depth;
};

TEST(Y16Ex, RefusesInOrderAndWritesNothing) {
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  const auto call = [](const DepthArgs& a) {
    return LumY16ImageTransformEx(a.dst, a.src, a.count, a.format, &a.depth);
  };
  expect_refusals<DepthArgs>(
      {dst.data(), src.data(), 4, 0, {0, 1, 12, 0, 0}},
      {{"no destination", [](DepthArgs& a) { a.dst = nullptr; }, bad_argument(1)},
       {"no source", [](DepthArgs& a) { a.src = nullptr; }, bad_argument(2)},
       {"no pixels", [](DepthArgs& a) { a.count = 0; }, bad_argument(3)},
       {"alignment 2", [](DepthArgs& a) { a.depth.alignment = 2; }, kNotImplemented},
       {"format 10", [](DepthArgs& a) { a.format = 10; }, kNotImplemented},
       {"format 6", [](DepthArgs& a) { a.format = 6; }, kNotImplemented},
       {"endianness 2", [](DepthArgs& a) { a.depth.endianness = 2; }, kNotImplemented},
       {"11 bits", [](DepthArgs& a) { a.depth.bitsUsed = 11; }, kNotImplemented},
       {"9 bits", [](DepthArgs& a) { a.depth.bitsUsed = 9; }, kNotImplemented},
       {"8 bits", [](DepthArgs& a) { a.depth.bitsUsed = 8; }, kNotImplemented},
       {"17 bits", [](DepthArgs& a) { a.depth.bitsUsed = 17; }, kNotImplemented}},
      dst, call);
  // The bits used only matter to words aligned at the bottom.
  EXPECT_EQ(call({dst.data(), src.data(), 4, 0, {0, 0, 11, 1, 0}}), 0u);
}

TEST(RgbEntries, WorkInPlaceWhereTheyPromise) {
  struct InPlace {
    FlatFunction function;
    uint32_t format;
    const char* order;
  };
  const InPlace cases[] = {
      {LumRGB8ImageTransform, 1, "RGB"},   {LumBGR8ImageTransform, 3, "BGR"},
      {LumRGB8ImageTransform, 3, "RGB"},   {LumBGR8ImageTransform, 1, "BGR"},
      {LumRGBA8ImageTransform, 4, "RGBA"}, {LumBGRA8ImageTransform, 2, "BGRA"}};
  for (const InPlace& c : cases) {
    for (const uint32_t count : kCounts) {
      const size_t bytes = count * reference::pixel_bytes(c.format);
      Bytes image = random_bytes(bytes, count), expected(bytes);
      const Frame frame = reference::colour(image.data(), count, c.order);
      reference::store(c.format, frame.data(), count, expected.data());
      ASSERT_EQ(c.function(image.data(), image.data(), count, c.format), 0u);
      ASSERT_EQ(image, expected) << c.order << " to format " << c.format << " count " << count;
    }
  }
}

// ---- Rows ----

TEST(FlipVertical, ExchangesRows) {
  for (const uint32_t row_bytes : {1u, 3u, 16u, 63u, 64u, 65u, 4097u, 100001u}) {
    for (const uint32_t rows : {2u, 3u, 4u, 7u}) {
      const Arena arena(size_t{row_bytes} * rows);
      uint8_t* image = arena.place(size_t{row_bytes} * rows, rows % 2 == 0);
      Bytes expected = random_bytes(size_t{row_bytes} * rows, rows);
      std::copy(expected.begin(), expected.end(), image);
      reference::flip(expected.data(), row_bytes, rows);
      ASSERT_EQ(LumFlipVertical(image, row_bytes, rows), 0u);
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), image))
          << rows << " rows of " << row_bytes << " bytes";
    }
  }
}

struct RowsArgs {
  uint8_t *dst, *src;
  uint32_t row_bytes, rows;
};

TEST(FlipVertical, RefusesInOrder) {
  Bytes image(64, 1);
  expect_refusals<RowsArgs>(
      {image.data(), nullptr, 8, 2},
      {{"no image", [](RowsArgs& a) { a.dst = nullptr; }, bad_argument(1)},
       {"no row bytes", [](RowsArgs& a) { a.row_bytes = 0; }, bad_argument(2)},
       {"no rows", [](RowsArgs& a) { a.rows = 0; }, bad_argument(3)},
       {"one row", [](RowsArgs& a) { a.rows = 1; }, bad_argument(3)}},
      image, [](const RowsArgs& a) { return LumFlipVertical(a.dst, a.row_bytes, a.rows); });
}

TEST(InterlacedToProgressive, InterleavesTheFields) {
  for (const uint32_t row_bytes : {1u, 2u, 3u, 64u, 65u, 641u}) {
    for (const uint32_t height : {2u, 4u, 6u, 10u}) {
      const Bytes fields = random_bytes(size_t{row_bytes} * height, height);
      expect_conversion(
          "separate " + std::to_string(row_bytes) + "x" + std::to_string(height), fields,
          fields.size(),
          [&](uint8_t* dst, const uint8_t* src) {
            return LumInterlacedToProgressive(dst, const_cast<uint8_t*>(src), row_bytes, height);
          },
          [&](uint8_t* dst) { reference::deinterlace(dst, fields.data(), row_bytes, height); });
      Bytes image = fields, expected = fields;
      reference::deinterlace(expected.data(), expected.data(), row_bytes, height);
      ASSERT_EQ(LumInterlacedToProgressive(image.data(), image.data(), row_bytes, height), 0u);
      ASSERT_EQ(image, expected) << "in place " << row_bytes << "x" << height;
    }
  }
}

TEST(InterlacedToProgressive, HandWorkedValues) {
  Bytes fields = {0xA0, 0xA1, 0xA2, 0xA3, 0xB0, 0xB1, 0xB2, 0xB3}, out(8);
  EXPECT_EQ(LumInterlacedToProgressive(out.data(), fields.data(), 2, 4), 0u);
  EXPECT_EQ(out, Bytes({0xB0, 0xB1, 0xA0, 0xA1, 0xB2, 0xB3, 0xA2, 0xA3}));
  // Odd rows in separate buffers: the second field is taken from before the true middle.
  Bytes odd = {1, 2, 3, 4, 5, 6}, odd_out(6);
  EXPECT_EQ(LumInterlacedToProgressive(odd_out.data(), odd.data(), 3, 2), 0u);
  EXPECT_EQ(odd_out, Bytes({3, 4, 5, 1, 2, 3}));
  EXPECT_EQ(LumInterlacedToProgressive(odd.data(), odd.data(), 3, 2), 0u);
  EXPECT_EQ(odd, Bytes({4, 5, 6, 1, 2, 3}));
  EXPECT_EQ(LumInterlacedToProgressive(odd.data(), out.data(), 3, 0), 0u);
  EXPECT_EQ(odd, Bytes({4, 5, 6, 1, 2, 3})) << "no rows, nothing written";
}

TEST(InterlacedToProgressive, RefusesInOrder) {
  Bytes dst(64, 1), src(64, 2);
  expect_refusals<RowsArgs>(
      {dst.data(), src.data(), 8, 4},
      {{"no destination", [](RowsArgs& a) { a.dst = nullptr; }, bad_argument(1)},
       {"no source", [](RowsArgs& a) { a.src = nullptr; }, bad_argument(2)},
       {"odd height", [](RowsArgs& a) { a.rows = 3; }, bad_argument(4)}},
      dst, [](const RowsArgs& a) {
        return LumInterlacedToProgressive(a.dst, a.src, a.row_bytes, a.rows);
      });
}

// Needs some 5 GB of memory.
TEST(FlatEntries, RunsBeyondFourGigabytes) {
  if (!environment_flag("LUM_TEST_HUGE")) GTEST_SKIP() << "LUM_TEST_HUGE is not set";
  const uint32_t count = (1u << 30) + 64;
  const Arena src(size_t{count} * 3), dst(size_t{count} * 4);
  const Bytes tail = random_bytes(3 * 128, 1);
  std::copy(tail.begin(), tail.end(), src.begin() + size_t{count - 128} * 3);
  ASSERT_EQ(LumRGB8ImageTransform(dst.begin(), src.begin(), count, LUM_FORMAT_BGRA32), 0u);
  Bytes expected(4 * 128);
  reference::store(LUM_FORMAT_BGRA32, reference::colour(tail.data(), 128, "RGB").data(), 128,
                   expected.data());
  const uint8_t* end = dst.begin() + size_t{count - 128} * 4;
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), end));
}

}  // namespace
}  // namespace lum::test
