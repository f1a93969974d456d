// SPDX-License-Identifier: MIT
// YUV of a chosen encoding, planar 4:2:0, planes: known answers, the reference, refusals.
#include <gtest/gtest.h>

#include "direct_support.h"

namespace lum::test {
namespace {

constexpr uint32_t kYuvLayouts[] = {8, 9, 10};

Source source_of(uint32_t layout) {
  Source source = Source::mono8;
  EXPECT_TRUE(i420_source(layout, &source));
  return source;
}

// ---- YUV to BGR24
TEST(DirectYuvToBgr, KnownAnswers) {
  const uint32_t expected[3][3] = {{0xC2DF6ABC, 0x6EC09A82, 0xF909E8F1},
                                   {0x5A9BE100, 0x93540AEF, 0xF8130BE4},
                                   {0xD5C0537A, 0x8401B320, 0x1258F2B9}};
  const Bytes src = ramp7(240);
  for (const uint32_t layout : kYuvLayouts) {
    const uint32_t n = layout == 8 ? 160 : layout == 9 ? 120 : 80;
    for (uint32_t encoding = 0; encoding < 3; ++encoding) {
      Bytes dst(3 * n);
      reference::yuv_to_bgr(dst.data(), src.data(), n, layout, encoding);
      EXPECT_EQ(crc(dst), expected[layout - 8][encoding]) << "the reference";
      std::fill(dst.begin(), dst.end(), uint8_t{0});
      EXPECT_EQ(LumYUVToBGR(dst.data(), src.data(), n, layout, encoding), 0u);
      EXPECT_EQ(crc(dst), expected[layout - 8][encoding])
          << "layout " << layout << " encoding " << encoding;
    }
  }
}

TEST(DirectYuvToBgr, HandWorkedValues) {
  const Bytes src = {100, 90, 200, 180};
  const Bytes expected[] = {
      {40, 48, 191, 130, 138, 255}, {30, 39, 201, 134, 143, 255}, {27, 54, 215, 132, 159, 255}};
  for (uint32_t encoding = 0; encoding < 3; ++encoding) {
    Bytes dst(6);
    EXPECT_EQ(LumYUVToBGR(dst.data(), src.data(), 2, LumPixelLayoutYUV422, encoding), 0u);
    EXPECT_EQ(dst, expected[encoding]) << "encoding " << encoding;
  }
}

TEST(DirectYuvToBgr, WritesWhatTheReferenceWritesAtEveryLevel) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    unsigned kind = 0;
    for (const uint32_t layout : kYuvLayouts) {
      for (uint32_t encoding = 0; encoding < 3; ++encoding) {
        for (const uint32_t n :
             {1u, 2u, 4u, 8u, 12u, 31u, 32u, 36u, 63u, 64u, 68u, 130u, 260u, 4100u}) {
          if (n % reference::layout_group(layout) != 0) continue;
          const Bytes src = random_bytes(reference::layout_bytes(layout, n), kind, kind);
          ++kind;
          expect_conversion(
              level + " layout " + std::to_string(layout) + " encoding " +
                  std::to_string(encoding) + " count " + std::to_string(n),
              src, 3 * n,
              [&](uint8_t* dst, const uint8_t* s) {
                yuv_to_bgr(kernels, source_of(layout), static_cast<YuvEncoding>(encoding), dst, s,
                           n);
                return 0u;
              },
              [&](uint8_t* dst) { reference::yuv_to_bgr(dst, src.data(), n, layout, encoding); });
          if (HasFatalFailure()) return;
        }
      }
    }
  });
}

// Encoding 1 undoes the library's own UYVY: a flat colour comes back within 3.
TEST(DirectYuvToBgr, BringsFlatColoursBack) {
  for (int colour = 0; colour < 9 * 9 * 9; ++colour) {
    const int parts[3] = {colour % 9, colour / 9 % 9, colour / 81};
    Bytes mosaic(16), uyvy(32), bgr(48);
    // RGGB, flat.
    for (size_t i = 0; i < 16; ++i) {
      const size_t part = i / 4 % 2 + i % 2;
      mosaic[i] = static_cast<uint8_t>(std::min(255, parts[part] * 32));
    }
    ASSERT_EQ(LumRaw8ImageTransform(uyvy.data(), mosaic.data(), 4, 4, LUM_FORMAT_UYVY, 0), 0u);
    ASSERT_EQ(LumYUVToBGR(bgr.data(), uyvy.data(), 16, LumPixelLayoutYUV422, 1), 0u);
    for (int c = 0; c < 3; ++c) {
      ASSERT_NEAR(bgr[static_cast<size_t>(2 - c)], std::min(255, parts[c] * 32), 3)
          << "colour " << colour << " component " << c;
    }
  }
}

struct YuvArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t count, layout, encoding;
};
TEST(DirectYuvToBgr, RefusesInOrder) {
  using A = YuvArgs;
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  expect_refusals<A>(
      {dst.data(), src.data(), 4, 8, 0},
      {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
       {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
       {"no pixels", [](A& a) { a.count = 0; }, bad_argument(3)},
       {"layout", [](A& a) { a.layout = 7; }, kNotImplemented},
       {"layout", [](A& a) { a.layout = 11; }, kNotImplemented},
       {"part of a group", [](A& a) { a.count = 6; }, bad_argument(3)},
       {"encoding", [](A& a) { a.encoding = 3; }, kNotImplemented}},
      dst, [](const A& a) { return LumYUVToBGR(a.dst, a.src, a.count, a.layout, a.encoding); });
  EXPECT_EQ(LumYUVToBGR(dst.data(), src.data(), 3, 9, 0), bad_argument(3));
}

// ---- I420
constexpr uint32_t kI420Layouts[] = {0, 4, 5, 6, 7, 8, 9, 10};

TEST(DirectI420, KnownAnswers) {
  const uint32_t expected[] = {0x13806148, 0xC258FA5D, 0x2E974F45, 0xA13E6DA2,
                               0xAB2AFE59, 0x205716CC, 0x33068616, 0xFEC0D9EE};
  for (size_t i = 0; i < 8; ++i) {
    const Bytes src = ramp7(reference::layout_bytes(kI420Layouts[i], 16 * 12));
    Bytes dst(16 * 12 * 3 / 2);
    reference::i420(dst.data(), src.data(), 16, 12, kI420Layouts[i]);
    EXPECT_EQ(crc(dst), expected[i]) << "the reference, layout " << kI420Layouts[i];
    EXPECT_EQ(LumImageToI420(dst.data(), src.data(), 16, 12, kI420Layouts[i]), 0u);
    EXPECT_EQ(crc(dst), expected[i]) << "layout " << kI420Layouts[i];
  }
}

TEST(DirectI420, WritesWhatTheReferenceWritesAtEveryLevel) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    unsigned kind = 0;
    for (const uint32_t layout : kI420Layouts) {
      for (const uint32_t width :
           {2u, 4u, 6u, 8u, 16u, 30u, 32u, 36u, 62u, 64u, 66u, 68u, 132u, 200u}) {
        for (const uint32_t height : {2u, 4u}) {
          if (layout == 8 && width % 4 != 0) continue;
          const Bytes src =
              random_bytes(reference::layout_bytes(layout, width * height), kind, kind);
          ++kind;
          expect_conversion(
              level + " layout " + std::to_string(layout) + " " + std::to_string(width) + "x" +
                  std::to_string(height),
              src, size_t{width} * height * 3 / 2,
              [&](uint8_t* dst, const uint8_t* s) {
                image_to_i420(kernels, layout, dst, s, width, height);
                return 0u;
              },
              [&](uint8_t* dst) { reference::i420(dst, src.data(), width, height, layout); });
          if (HasFatalFailure()) return;
        }
      }
    }
  });
}

struct I420Args {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t width, height, layout;
};
TEST(DirectI420, RefusesInOrder) {
  using A = I420Args;
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  const auto call = [](const A& a) {
    return LumImageToI420(a.dst, a.src, a.width, a.height, a.layout);
  };
  expect_refusals<A>({dst.data(), src.data(), 4, 2, 8},
                     {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
                      {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
                      {"no width", [](A& a) { a.width = 0; }, bad_argument(3)},
                      {"no height", [](A& a) { a.height = 0; }, bad_argument(4)},
                      {"packed mono", [](A& a) { a.layout = 1; }, kNotImplemented},
                      {"raw", [](A& a) { a.layout = 2; }, kNotImplemented},
                      {"raw packed", [](A& a) { a.layout = 3; }, kNotImplemented},
                      {"no such layout", [](A& a) { a.layout = 11; }, kNotImplemented},
                      {"half a group", [](A& a) { a.width = 6; }, bad_argument(3)},
                      {"odd height", [](A& a) { a.height = 3; }, bad_argument(4)}},
                     dst, call);
  EXPECT_EQ(call({dst.data(), src.data(), 3, 2, 0}), bad_argument(3)) << "odd width";
  EXPECT_EQ(call({dst.data(), src.data(), 6, 2, 0}), 0u);
}

// ---- Planes
TEST(DirectPlanes, KnownAnswer) {
  const Bytes a = frame_a();
  Bytes joined(a.size());
  uint8_t* planes[3] = {joined.data(), joined.data() + 64, joined.data() + 128};
  EXPECT_EQ(LumPackedToPlanar(planes, a.data(), 64, 3, 1), 0u);
  EXPECT_EQ(crc(joined), 0x6B448462u);
}

struct PlanesCase {
  uint32_t n, channels, bytes, present;  // present: bit i for plane i
};
void expect_planes(const Kernels& kernels, const std::string& level, const PlanesCase& c) {
  const std::string label = level + " " + std::to_string(c.n) + " pixels of " +
                            std::to_string(c.channels) + " x " + std::to_string(c.bytes) +
                            " bytes, planes " + std::to_string(c.present);
  const size_t plane = size_t{c.n} * c.bytes, packed = plane * c.channels;
  const reference::Planes planes_of_case = {c.n, c.channels, c.bytes, c.present};
  const Bytes src = random_bytes(packed, c.n);
  // All planes lie in one buffer, one after the other.
  expect_conversion(
      "split " + label, src, packed,
      [&](uint8_t* dst, const uint8_t* s) {
        uint8_t* planes[4];
        for (uint32_t i = 0; i < c.channels; ++i) {
          planes[i] = c.present >> i & 1 ? dst + i * plane : nullptr;
        }
        packed_to_planar(kernels, planes, s, c.n, c.channels, c.bytes);
        return 0u;
      },
      [&](uint8_t* dst) { reference::split(dst, src.data(), planes_of_case); });
  if (::testing::Test::HasFatalFailure()) return;
  expect_conversion(
      "join " + label, src, packed,
      [&](uint8_t* dst, const uint8_t* s) {
        const uint8_t* planes[4];
        for (uint32_t i = 0; i < c.channels; ++i) {
          planes[i] = c.present >> i & 1 ? s + i * plane : nullptr;
        }
        planar_to_packed(kernels, dst, planes, c.n, c.channels, c.bytes);
        return 0u;
      },
      [&](uint8_t* dst) { reference::join(dst, src.data(), planes_of_case); });
}

TEST(DirectPlanes, GoApartAndTogetherAtEveryLevel) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    for (const uint32_t channels : {2u, 3u, 4u}) {
      for (const uint32_t bytes : {1u, 2u}) {
        for (const uint32_t n :
             {1u, 3u, 7u, 8u, 15u, 16u, 17u, 31u, 32u, 33u, 63u, 64u, 65u, 129u, 1000u}) {
          const uint32_t all = (1u << channels) - 1;
          for (const uint32_t present : {all, all >> 1, 1u, all & ~2u}) {
            expect_planes(kernels, level, {n, channels, bytes, present});
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  });
}

struct PlanesArgs {
  uint8_t* packed;
  uint8_t** planes;
  uint32_t count, channels, bytes;
};
TEST(DirectPlanes, RefuseInOrder) {
  using A = PlanesArgs;
  static uint8_t* none[4] = {};
  Bytes packed(64, 0xEE), plane(64, 0xEE);
  uint8_t* planes[4] = {nullptr, plane.data(), nullptr, nullptr};
  const A good = {packed.data(), planes, 4, 3, 1};
  const Refusal<A> count = {"no pixels", [](A&a) { a.count = 0; }, bad_argument(3)},
                   one = {"one channel", [](A&a) { a.channels = 1; }, bad_argument(4)},
                   five = {"five channels", [](A&a) { a.channels = 5; }, bad_argument(4)},
                   size = {"bytes of a sample", [](A&a) { a.bytes = 3; }, bad_argument(5)},
                   no_size = {"no bytes", [](A&a) { a.bytes = 0; }, bad_argument(5)};
  expect_refusals<A>(good,
                     {{"no planes", [](A& a) { a.planes = nullptr; }, bad_argument(1)},
                      {"no source", [](A& a) { a.packed = nullptr; }, bad_argument(2)},
                      count,
                      one,
                      five,
                      size,
                      no_size,
                      {"all null",
                       [](A& a) {
                         if (a.planes) a.planes = none;
                       },
                       bad_argument(1)}},
                     plane, [](const A& a) {
                       return LumPackedToPlanar(a.planes, a.packed, a.count, a.channels, a.bytes);
                     });
  expect_refusals<A>(good,
                     {{"no destination", [](A& a) { a.packed = nullptr; }, bad_argument(1)},
                      {"no planes", [](A& a) { a.planes = nullptr; }, bad_argument(2)},
                      count,
                      one,
                      five,
                      size,
                      no_size,
                      {"all null",
                       [](A& a) {
                         if (a.planes) a.planes = none;
                       },
                       bad_argument(2)}},
                     packed, [](const A& a) {
                       return LumPlanarToPacked(a.packed, a.planes, a.count, a.channels, a.bytes);
                     });
}

}  // namespace
}  // namespace lum::test
