// SPDX-License-Identifier: MIT
// Binned Bayer mosaics, and CYGM by windows: known answers, the reference, relations, refusals.
#include <gtest/gtest.h>

#include "bayer/binned.h"
#include "cygm/cygm_window.h"
#include "direct_support.h"
#include "mirrored_rows.h"

namespace lum::test {
namespace {

// What the four functions have in common; LumIRaw8CYGMToY8 serves one format.
struct Window {
  const char* name;
  unsigned divisor;  // of width and height
  bool bayer, luma;
  uint32_t (*exported)(uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t format,
                       uint32_t pattern);
  void (*at_level)(const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h,
                   uint32_t format, uint32_t pattern);
  reference::Frame (*expected)(const uint8_t* src, int w, int h, uint32_t pattern);

  size_t pixels(Size size) const { return size.width / divisor * (size.height / divisor); }
  bool takes(Size size, uint32_t format) const {
    return format != LUM_FORMAT_UYVY || divisor == 1 || size.width % 4 == 0;
  }
};

const Window kBayerBin = {
    "LumRaw8ImageTransform_Bin",
    2,
    true,
    false,
    LumRaw8ImageTransform_Bin,
    [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t format,
       uint32_t pattern) {
      convert_mosaic_binned(k, {dst, src, w, h, red_phase(pattern), static_cast<Sink>(format)});
    },
    reference::bayer_binned};
const Window kCygm3x3 = {
    "LumIRaw8CYGMImageTransform_3x3",
    1,
    false,
    false,
    LumIRaw8CYGMImageTransform_3x3,
    [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t format,
       uint32_t) { convert_cygm_3x3(k, static_cast<Sink>(format), dst, src, w, h); },
    [](const uint8_t* src, int w, int h, uint32_t) { return reference::cygm_3x3(src, w, h); }};
const Window kCygmBin = {
    "LumIRaw8CYGMImageTransform_Bin",
    2,
    false,
    false,
    LumIRaw8CYGMImageTransform_Bin,
    [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t format,
       uint32_t) { convert_cygm_binned(k, static_cast<Sink>(format), dst, src, w, h); },
    [](const uint8_t* src, int w, int h, uint32_t) { return reference::cygm_binned(src, w, h); }};
const Window kCygmLuma = {
    "LumIRaw8CYGMToY8",
    1,
    false,
    true,
    [](uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t, uint32_t) {
      return LumIRaw8CYGMToY8(dst, src, w, h);
    },
    [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t,
       uint32_t) { convert_cygm_to_luma(k, dst, src, w, h); },
    [](const uint8_t* src, int w, int h, uint32_t) {
      const Bytes y = reference::cygm_luma(src, w, h);
      return reference::mono8(y.data(), y.size());
    }};

Bytes expected_bytes(const Window& window, const Bytes& src, Size size, uint32_t format,
                     uint32_t pattern) {
  const reference::Frame frame = window.expected(src.data(), static_cast<int>(size.width),
                                                 static_cast<int>(size.height), pattern);
  Bytes out(frame.size() * reference::pixel_bytes(format));
  reference::store(format, frame.data(), frame.size(), out.data());
  return out;
}

Bytes converted(const Window& window, const Bytes& src, Size size, uint32_t format,
                uint32_t pattern = 0) {
  Bytes out(window.pixels(size) * reference::pixel_bytes(format));
  EXPECT_EQ(window.exported(out.data(), src.data(), static_cast<uint32_t>(size.width),
                            static_cast<uint32_t>(size.height), format, pattern),
            0u)
      << window.name;
  return out;
}

TEST(Windows, KnownAnswers) {
  struct Case {
    const Window& window;
    bool of_b;
    uint32_t format, pattern, crc;
  };
  const Case cases[] = {
      {kBayerBin, false, 3, 0, 0x9771B32B}, {kBayerBin, false, 3, 1, 0xB5A43E3B},
      {kBayerBin, false, 3, 2, 0xAEA0CC2E}, {kBayerBin, false, 3, 3, 0x0863A7CE},
      {kBayerBin, false, 6, 0, 0x3B79FE6B}, {kCygm3x3, false, 0, 0, 0x36D1DBFE},
      {kCygm3x3, false, 3, 0, 0x414E27AC},  {kCygm3x3, false, 5, 0, 0x27DD0D58},
      {kCygm3x3, false, 6, 0, 0xF4BB7122},  {kCygm3x3, true, 0, 0, 0xC08C8F63},
      {kCygm3x3, true, 3, 0, 0xE87D6972},   {kCygm3x3, true, 5, 0, 0x9E110DB3},
      {kCygm3x3, true, 6, 0, 0xA2CE09BF},   {kCygmBin, false, 0, 0, 0x24E5E1AB},
      {kCygmBin, false, 3, 0, 0x40CB4A2F},  {kCygmBin, false, 5, 0, 0x8FD6F6FD},
      {kCygmBin, false, 6, 0, 0x8D3C67F8},  {kCygmBin, true, 0, 0, 0xE2C09D38},
      {kCygmBin, true, 3, 0, 0xF1224393},   {kCygmBin, true, 5, 0, 0x13B87120},
      {kCygmBin, true, 6, 0, 0xB94031BE},   {kCygmLuma, false, 0, 0, 0x3E59216C},
      {kCygmLuma, true, 0, 0, 0x5FA90320},
  };
  const Size size = {16, 12};
  for (const Case& c : cases) {
    const Bytes src = c.of_b ? frame_b() : frame_a();
    const std::string what =
        describe(c.window.name, size, c.format, c.pattern) + (c.of_b ? " of B, " : " of A, ");
    Bytes out = expected_bytes(c.window, src, size, c.format, c.pattern);
    EXPECT_EQ(crc(out), c.crc) << what << "the reference";
    out = converted(c.window, src, size, c.format, c.pattern);
    EXPECT_EQ(crc(out), c.crc) << what << "the entry";
    at_every_level([&](const Kernels& k, const std::string& level) {
      std::fill(out.begin(), out.end(), uint8_t{0});
      c.window.at_level(k, out.data(), src.data(), 16, 12, c.format, c.pattern);
      EXPECT_EQ(crc(out), c.crc) << what << level;
    });
  }
}

TEST(Windows, HandWorkedRows) {
  const Bytes b = converted(kCygm3x3, frame_b(), {16, 12}, LUM_FORMAT_RGB24);
  EXPECT_EQ(Bytes(&b[0], &b[0] + 12),
            Bytes({122, 141, 142, 129, 129, 129, 117, 117, 114, 103, 107, 118}));
  EXPECT_EQ(Bytes(&b[5 * 48], &b[5 * 48] + 12),
            Bytes({117, 128, 129, 119, 121, 127, 121, 118, 111, 116, 115, 112}));
  // One cell: every colour's neighbours are its mirror images, so each is the sample itself.
  EXPECT_EQ(converted(kBayerBin, {200, 100, 60, 50}, {2, 2}, LUM_FORMAT_RGB24),
            Bytes({200, 80, 50}));
}

TEST(Windows, EveryLevelWritesWhatTheReferenceWrites) {
  const Size sizes[] = {
      {2, 4},   {4, 4},   {6, 8},    {8, 12},   {14, 4},   {18, 8},   {34, 8},
      {66, 12}, {130, 8}, {132, 16}, {4096, 4}, {4098, 4}, {4230, 8}, {4100, kTileRows + 4}};
  unsigned kind = 0;
  for (const Window* window : {&kBayerBin, &kCygm3x3, &kCygmBin, &kCygmLuma}) {
    for (const Size size : sizes) {
      const unsigned repeats = size.width > 1000 || quick() ? 1 : kFillKinds;
      for (unsigned repeat = 0; repeat < repeats; ++repeat, ++kind) {
        // The CYGM functions do not read the last argument.
        const uint32_t pattern = kPatterns[kind % 5];
        const bool large = size.height > kTileRows;
        const Bytes src = random_bytes(size.width * size.height, kind, large ? 0 : kind);
        const reference::Frame frame = window->expected(src.data(), static_cast<int>(size.width),
                                                        static_cast<int>(size.height), pattern);
        for (uint32_t format = 0; format <= (window->luma ? 0u : 6u); ++format) {
          if (!window->takes(size, format)) continue;
          if (large && !window->luma && format != LUM_FORMAT_BGR24) continue;
          const uint32_t w = static_cast<uint32_t>(size.width);
          const uint32_t h = static_cast<uint32_t>(size.height);
          const std::string label = describe(window->name, size, format, pattern) + " ";
          const size_t bytes = frame.size() * reference::pixel_bytes(format);
          const auto expected = [&](uint8_t* dst) {
            reference::store(format, frame.data(), frame.size(), dst);
          };
          at_every_level([&](const Kernels& k, const std::string& level) {
            expect_conversion(
                label + level, src, bytes,
                [&](uint8_t* dst, const uint8_t* s) {
                  window->at_level(k, dst, s, w, h, format, pattern);
                  return 0u;
                },
                expected);
          });
          expect_conversion(
              label + "entry", src, bytes,
              [&](uint8_t* dst, const uint8_t* s) {
                return window->exported(dst, s, w, h, format, pattern);
              },
              expected);
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

// A frame of one sample for each colour of the mosaic.
Bytes flat_cygm(const Bytes& cy_ye_g_mg, Size size) {
  static const int kLines[4][2] = {{0, 1}, {2, 3}, {0, 1}, {3, 2}};
  Bytes src(size.width * size.height);
  for (size_t y = 0; y < size.height; ++y) {
    const size_t row = y % 2 == 0 ? size.height / 2 + y / 2 : y / 2;
    for (size_t x = 0; x < size.width; ++x) {
      src[row * size.width + x] = cy_ye_g_mg[static_cast<size_t>(kLines[y % 4][x % 2])];
    }
  }
  return src;
}

TEST(Windows, FlatQuadruplesGiveOneColour) {
  const Size size = {10, 8};
  Random random(21);
  std::vector<Bytes> quadruples = {{0, 0, 0, 0},     {77, 77, 77, 77}, {255, 255, 255, 255},
                                   {0, 255, 0, 255}, {255, 0, 0, 255}, {255, 255, 0, 0}};
  for (int i = 0; i < 200; ++i) {
    quadruples.push_back({random.byte(), random.byte(), random.byte(), random.byte()});
  }
  for (const Bytes& quadruple : quadruples) {
    const Bytes src = flat_cygm(quadruple, size);
    const Bytes full = converted(kCygm3x3, src, size, LUM_FORMAT_RGB24);
    const Bytes binned = converted(kCygmBin, src, size, LUM_FORMAT_RGB24);
    Bytes colour(full.begin(), full.begin() + 3);
    if (std::equal(quadruple.begin() + 1, quadruple.end(), quadruple.begin())) {
      EXPECT_EQ(colour, Bytes(3, quadruple[0]));
    }
    for (const Bytes& picture : {full, binned}) {
      for (size_t i = 0; i < picture.size(); ++i) ASSERT_EQ(picture[i], colour[i % 3]) << i;
    }
  }
}

TEST(Windows, FlatBayerStaysWhatItIs) {
  const Bytes rgb = {200, 10, 90};
  static const char* const kCells[4] = {"RGGB", "GBRG", "GRBG", "BGGR"};
  for (uint32_t pattern = 0; pattern < 4; ++pattern) {
    Bytes src;
    for (size_t i = 0; i < 12 * 6; ++i) {
      const char c = kCells[pattern][i / 12 % 2 * 2 + i % 2];
      src.push_back(rgb[c == 'R' ? 0 : c == 'G' ? 1 : 2]);
    }
    const Bytes out = converted(kBayerBin, src, {12, 6}, LUM_FORMAT_RGB24, pattern);
    for (size_t i = 0; i < out.size(); ++i) ASSERT_EQ(out[i], rgb[i % 3]) << pattern;
  }
}

TEST(Windows, RefuseInOrderAndWriteNothing) {
  using M = MosaicArgs;
  std::vector<Refusal<M>> bayer = mosaic_refusals();
  bayer.push_back({"pattern 4", [](M& a) { a.pattern = 4; }, bad_argument(5)});
  bayer.push_back(bad_format<7, M>());
  bayer.push_back(
      {"an odd pair of pixels", [](M& a) { a.format = 6, a.width = 6; }, bad_argument(3)});
  expect_mosaic_refusals(LumRaw8ImageTransform_Bin, bayer);

  std::vector<Refusal<M>> luma = mosaic_refusals();
  luma.back() = {"height 6", [](M& a) { a.height = 6; }, bad_argument(4)};
  expect_mosaic_refusals(kCygmLuma.exported, luma);
  std::vector<Refusal<M>> cygm = luma;
  cygm.push_back(bad_format<7, M>());
  expect_mosaic_refusals(LumIRaw8CYGMImageTransform_3x3, cygm);
  cygm.push_back(
      {"an odd pair of pixels", [](M& a) { a.format = 6, a.width = 6; }, bad_argument(3)});
  expect_mosaic_refusals(LumIRaw8CYGMImageTransform_Bin, cygm);
}

}  // namespace
}  // namespace lum::test
