// SPDX-License-Identifier: MIT
// The YUV entry points: known answers and the reference.
#include <gtest/gtest.h>

#include "lum/lum.h"
#include "reference.h"
#include "test_support.h"

namespace lum::test {
namespace {

struct Layout {
  const char* name;
  FlatFunction function;
  int layout;
  uint32_t group_pixels;
  size_t group_bytes;
  uint32_t crc[5];  // of formats 0, 1, 3, 5, 6
};
const Layout kLayouts[] = {
    {"LumYUV411ImageTransform",
     LumYUV411ImageTransform,
     411,
     4,
     6,
     {0xD0EDBEF2, 0xC2DF6ABC, 0x548695CD, 0xF1F2F4B1, 0x48CE544C}},
    {"LumYUV422ImageTransform",
     LumYUV422ImageTransform,
     422,
     2,
     4,
     {0x4F429CFC, 0x5A9BE100, 0x1FAB41D0, 0x1A70E949, 0x20B3CE1E}},
    {"LumYUV444ImageTransform",
     LumYUV444ImageTransform,
     444,
     1,
     3,
     {0x3B4176D1, 0xD5C0537A, 0xA1CC2787, 0x0B4AEC15, 0xEC3DA074}},
};

TEST(Yuv, KnownAnswers) {
  Bytes src;
  for (int i = 0; i < 240; ++i) src.push_back(static_cast<uint8_t>(7 * i));
  for (const Layout& layout : kLayouts) {
    const uint32_t count = static_cast<uint32_t>(240 / layout.group_bytes) * layout.group_pixels;
    for (size_t i = 0; i < 5; ++i) {
      static const uint32_t kFormats[5] = {0, 1, 3, 5, 6};
      Bytes expected(count * reference::pixel_bytes(kFormats[i])), actual(expected.size());
      reference::store_yuv(kFormats[i], src.data(), count, layout.layout, expected.data());
      EXPECT_EQ(reference::crc32(expected.data(), expected.size()), layout.crc[i])
          << "the reference, " << layout.name << " format " << kFormats[i];
      EXPECT_EQ(layout.function(actual.data(), src.data(), count, kFormats[i]), 0u);
      EXPECT_EQ(reference::crc32(actual.data(), actual.size()), layout.crc[i])
          << layout.name << " format " << kFormats[i];
    }
  }
}

TEST(Yuv, HandWorkedValues) {
  struct Case {
    FlatFunction function;
    uint32_t count, format;
    Bytes src, expected;
  };
  for (const Case& c : {
           Case{LumYUV422ImageTransform, 2, 3, {90, 81, 240, 81}, {238, 14, 14, 238, 14, 14}},
           Case{LumYUV422ImageTransform, 2, 5, {90, 81, 240, 81}, {61, 61}},
           Case{LumYUV411ImageTransform,
                4,
                6,
                {100, 10, 20, 150, 30, 40},
                {100, 10, 150, 20, 100, 30, 150, 40}},
           Case{LumYUV444ImageTransform, 2, 6, {100, 10, 150, 103, 20, 151}, {101, 10, 150, 20}},
           Case{LumYUV444ImageTransform, 1, 2, {128, 77, 128}, {77, 77, 77, 0xEE}},
       }) {
    Bytes dst(c.expected.size(), 0xEE);
    EXPECT_EQ(c.function(dst.data(), c.src.data(), c.count, c.format), 0u);
    EXPECT_EQ(dst, c.expected) << "format " << c.format;
  }
}

TEST(Yuv, WritesWhatTheReferenceWrites) {
  unsigned kind = 0;
  for (const Layout& layout : kLayouts) {
    for (uint32_t format = 0; format <= 6; ++format) {
      for (const uint32_t count :
           {1u,  2u,  3u,  4u,  6u,  8u,   12u,  16u,  20u,  31u,   32u,
            36u, 60u, 64u, 66u, 68u, 127u, 128u, 132u, 260u, 4100u, 20000u}) {
        if (count % layout.group_pixels != 0 || (format == 6 && count % 2 != 0)) continue;
        for (unsigned repeat = 0; repeat < 4; ++repeat) {
          const Bytes src =
              random_bytes(count / layout.group_pixels * layout.group_bytes, kind, kind);
          ++kind;
          expect_conversion(
              std::string(layout.name) + " count " + std::to_string(count) + " format " +
                  std::to_string(format),
              src, count * reference::pixel_bytes(format),
              [&](uint8_t* dst, const uint8_t* s) {
                return layout.function(dst, s, count, format);
              },
              [&](uint8_t* dst) {
                reference::store_yuv(format, src.data(), count, layout.layout, dst);
              });
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

// Every Y, U and V; LUM_TEST_QUICK every 17th V.
TEST(Yuv, EveryColour) {
  Bytes src(3 * 65536), expected(3 * 65536), actual(3 * 65536);
  for (int v = 0; v < 256; v += quick() ? 17 : 1) {
    for (size_t i = 0; i < 65536; ++i) {
      src[3 * i] = static_cast<uint8_t>(i);
      src[3 * i + 1] = static_cast<uint8_t>(i >> 8);
      src[3 * i + 2] = static_cast<uint8_t>(v);
    }
    ASSERT_EQ(LumYUV444ImageTransform(actual.data(), src.data(), 65536, 3), 0u);
    reference::store_yuv(3, src.data(), 65536, 444, expected.data());
    ASSERT_TRUE(actual == expected) << "V " << v;
  }
}

TEST(Yuv, SameBufferIsACopyNotMade) {
  Bytes image = random_bytes(256, 9);
  const Bytes before = image;
  EXPECT_EQ(LumYUV422ImageTransform(image.data(), image.data(), 128, LUM_FORMAT_UYVY), 0u);
  EXPECT_EQ(image, before);
}

TEST(Yuv, RefusesInOrderAndWritesNothing) {
  using A = FlatArgs;
  const Refusal<A> none = bad_count<0>(), six = bad_count<6>(), odd = bad_count<5>();
  const Refusal<A> odd_uyvy = {"odd count to UYVY", [](A& a) { a.count = 5, a.format = 6; },
                               bad_argument(3)};
  const std::vector<Refusal<A>> refusals[] = {
      {kFlatNoDst, kFlatNoSrc, none, six, odd, bad_format<7>()},
      {kFlatNoDst, kFlatNoSrc, none, odd, bad_format<7>()},
      {kFlatNoDst, kFlatNoSrc, none, odd_uyvy}};
  const Bytes src(64, 1);
  Bytes dst(64);
  for (size_t i = 0; i < 3; ++i) {
    std::fill(dst.begin(), dst.end(), uint8_t{0xEE});
    expect_refusals<A>({dst.data(), src.data(), 8, 1}, refusals[i], dst, [&](const A& a) {
      return kLayouts[i].function(a.dst, a.src, a.count, a.format);
    });
  }
  // The parity of 4:4:4 to UYVY is looked at last.
  EXPECT_EQ(LumYUV444ImageTransform(dst.data(), src.data(), 5, 7), kNotImplemented);
}

}  // namespace
}  // namespace lum::test
