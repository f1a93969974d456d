// SPDX-License-Identifier: MIT
// The two CYGM entry points against the reference.
#include <gtest/gtest.h>

#include "lum/lum.h"
#include "reference.h"
#include "test_support.h"

namespace lum::test {
namespace {

// The reference itself, on values worked by hand.
TEST(Reference, CygmBlocks) {
  struct Case {
    int cy, ye, g, mg, r, green, b, luma601, luma709;
  };
  for (const Case& c :
       {Case{128, 128, 128, 128, 128, 128, 128, 128, 128}, Case{0, 255, 0, 255, 255, 13, 8, 85, 64},
        Case{200, 120, 60, 150, 150, 85, 255, 123, 111},
        Case{10, 11, 12, 14, 11, 11, 11, 11, 11}}) {
    const reference::Pixel p = reference::cygm_block(c.cy, c.ye, c.g, c.mg);
    EXPECT_EQ(std::vector<int>({p.r, p.g, p.b}), std::vector<int>({c.r, c.green, c.b}));
    EXPECT_EQ(reference::luma601(p), c.luma601);
    EXPECT_EQ(reference::luma709(p), c.luma709);
  }
}

TEST(Cygm, WritesWhatTheReferenceWrites) {
  unsigned kind = 0;
  for (const Size size : {Size{2, 4}, Size{4, 4}, Size{2, 8}, Size{34, 12}, Size{66, 16},
                          Size{130, 8}, Size{8196, 4}}) {
    for (unsigned repeat = 0; repeat < kFillKinds; ++repeat) {
      if (size.width > 1000 && repeat > 1) continue;
      const Bytes src = random_bytes(size.width * size.height, kind, kind);
      ++kind;
      const reference::Frame frame = reference::cygm(src.data(), size.width, size.height);
      for (uint32_t format = 0; format <= 6; ++format) {
        // The sixth argument is not read.
        expect_mosaic("LumIRaw8CYGMImageTransform", LumIRaw8CYGMImageTransform, size, format, kind,
                      src, [&](uint8_t* dst) {
                        reference::store_mosaic(format, frame, size.width, size.height, dst);
                      });
      }
    }
  }
}

// The worked values as a frame: lines 0, 2 are the second field, and the blocks of rows 0 .. 2 hold
// the same four samples in every phase.
TEST(Cygm, HandWorkedFrame) {
  const Bytes src = {60, 150, 150, 60, 200, 120, 200, 120};  // G Mg, Mg G; Cy Ye, Cy Ye
  Bytes dst(2 * 4 * 4, 0xEE);
  ASSERT_EQ(LumIRaw8CYGMImageTransform(dst.data(), src.data(), 2, 4, LUM_FORMAT_RGBA32, 0), 0u);
  for (size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(Bytes(&dst[4 * i], &dst[4 * i] + 4), Bytes({150, 85, 255, 0xEE})) << "pixel " << i;
  }
}

TEST(CygmToBgr, WritesWhatTheReferenceWrites) {
  unsigned kind = 0;
  // Heights about multiples of the rows whose last pixels are made together.
  for (const Size size : {Size{2, 8}, Size{4, 8}, Size{2, 16}, Size{66, 12}, Size{130, 16},
                          Size{10, 36}, Size{6, 40}, Size{34, 72}, Size{8196, 8}}) {
    for (unsigned repeat = 0; repeat < kFillKinds; ++repeat) {
      if (size.width > 1000 && repeat > 1) continue;
      const Bytes src = random_bytes(size.width * size.height, kind, kind);
      ++kind;
      expect_conversion(
          describe("LumIRaw8CYGMToBGR", size, 1, 0), src, size.width * size.height * 3,
          [&](uint8_t* dst, const uint8_t* s) {
            return LumIRaw8CYGMToBGR(dst, s, static_cast<uint32_t>(size.width),
                                     static_cast<uint32_t>(size.height));
          },
          [&](uint8_t* dst) {
            reference::cygm_to_bgr_direct(src.data(), size.width, size.height, dst);
          });
    }
  }
}

TEST(Cygm, RefusesInOrderAndWritesNothing) {
  std::vector<Refusal<MosaicArgs>> refusals = mosaic_refusals();
  refusals.push_back({"height 6", [](MosaicArgs& a) { a.height = 6; }, bad_argument(4)});
  refusals.push_back(bad_format<7, MosaicArgs>());
  refusals.push_back(bad_format<11, MosaicArgs>());
  expect_mosaic_refusals(LumIRaw8CYGMImageTransform, refusals);
}

TEST(CygmToBgr, RefusesInOrderAndWritesNothing) {
  const Bytes src(256, 1);
  Bytes dst(512, 0xEE);
  const Bytes before = dst;
  // Neither is refused, neither may be looked at.
  EXPECT_EQ(LumIRaw8CYGMToBGR(dst.data(), src.data(), 0, 8), 0u);
  EXPECT_EQ(LumIRaw8CYGMToBGR(dst.data(), src.data(), 4, 0), 0u);
  EXPECT_EQ(dst, before) << "an empty frame was written";
  using A = MosaicArgs;
  expect_refusals<A>(
      {dst.data(), src.data(), 4, 8, 1, 0},
      {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
       {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
       {"odd width", [](A& a) { a.width = 3; }, bad_argument(3)},
       {"height 6", [](A& a) { a.height = 6; }, bad_argument(4)},
       {"height 4 has no row to repeat", [](A& a) { a.height = 4; }, bad_argument(4)}},
      dst, [](const A& a) { return LumIRaw8CYGMToBGR(a.dst, a.src, a.width, a.height); });
}

}  // namespace
}  // namespace lum::test
