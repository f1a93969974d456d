// SPDX-License-Identifier: MIT
// The colour-corrected Bayer kernels: known answers, limits of the sums, the reference.
#include "bayer/colour_correction.h"

#include <gtest/gtest.h>

#include "lum/lum.h"
#include "reference.h"
#include "test_support.h"

namespace lum::test {
namespace {

constexpr ColourMatrix kTypical = {2, {1638, -409, -204, -307, 1536, -204, 0, -512, 1536}};
constexpr ColourMatrix kIdentity = {2, {1024, 0, 0, 0, 1024, 0, 0, 0, 1024}};

struct Kernel {
  const char* name;
  uint32_t format;
  size_t bits;  // of a source pixel
  bool shifted;
  void (*convert)(uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t pattern,
                  uint32_t shift, const ColourMatrix& matrix);
  reference::Frame (*expected)(const uint8_t* src, size_t w, size_t h, uint32_t pattern,
                               uint32_t shift, const int32_t* m);
};

const Kernel kKernels[] = {
    {"cc_raw8_to_bgr24", LUM_FORMAT_BGR24, 8, false,
     [](uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t pattern, uint32_t,
        const ColourMatrix& m) { cc_raw8_to_bgr24(dst, src, w, h, pattern, m); },
     [](const uint8_t* src, size_t w, size_t h, uint32_t pattern, uint32_t, const int32_t* m) {
       return reference::correct(reference::bayer(w, h, pattern, reference::bytes_of(src, w)), m,
                                 10, 255);
     }},
    {"cc_raw8_to_mono8", LUM_FORMAT_MONO8_REC601, 8, false,
     [](uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t pattern, uint32_t,
        const ColourMatrix& m) { cc_raw8_to_mono8(dst, src, w, h, pattern, m); },
     [](const uint8_t* src, size_t w, size_t h, uint32_t pattern, uint32_t, const int32_t* m) {
       return reference::correct_mono8(src, w, h, pattern, m);
     }},
    {"cc_raw16_to_mono16", LUM_FORMAT_MONO16_REC601, 16, true,
     [](uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t pattern, uint32_t shift,
        const ColourMatrix& m) { cc_raw16_to_mono16(dst, src, w, h, pattern, shift, m); },
     [](const uint8_t* src, size_t w, size_t h, uint32_t pattern, uint32_t shift,
        const int32_t* m) {
       return reference::correct(
           reference::bayer(w, h, pattern, reference::shifted_words(src, w, shift, false)), m, 10,
           65535);
     }},
    {"cc_raw16_to_bgr48", LUM_FORMAT_BGR48, 16, true,
     [](uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t pattern, uint32_t shift,
        const ColourMatrix& m) { cc_raw16_to_bgr48(dst, src, w, h, pattern, shift, m); },
     [](const uint8_t* src, size_t w, size_t h, uint32_t pattern, uint32_t shift,
        const int32_t* m) {
       return reference::correct(
           reference::bayer(w, h, pattern, reference::shifted_words(src, w, shift, false)), m, 10,
           65535);
     }},
    {"cc_raw12_to_bgr24", LUM_FORMAT_BGR24, 12, false,
     [](uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t pattern, uint32_t,
        const ColourMatrix& m) { cc_raw12_to_bgr24(dst, src, w, h, pattern, m); },
     [](const uint8_t* src, size_t w, size_t h, uint32_t pattern, uint32_t, const int32_t* m) {
       return reference::correct(
           reference::bayer(w, h, pattern, reference::packed12_samples(src, w)), m, 14, 255);
     }},
    {"cc_raw12_to_bgr48", LUM_FORMAT_BGR48, 12, false,
     [](uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t pattern, uint32_t,
        const ColourMatrix& m) { cc_raw12_to_bgr48(dst, src, w, h, pattern, m); },
     [](const uint8_t* src, size_t w, size_t h, uint32_t pattern, uint32_t, const int32_t* m) {
       const reference::Sampler sample = reference::packed12_samples(src, w);
       return reference::correct(
           reference::bayer(w, h, pattern, [&](size_t x, size_t y) { return sample(x, y) << 4; }),
           m, 10, 65535);
     }},
};

// The known answers: the reference must give them, and the kernels.
TEST(ColourCorrection, KnownAnswers) {
  const uint32_t crc8[4] = {0x42E323F3, 0xAF63BA96, 0x2F399CFA, 0xF6757CE1};
  const uint32_t crc16[4] = {0x2B026413, 0xE20D5152, 0x8D82B7F4, 0x3A0A93C4};
  const Bytes a = frame_a();
  Bytes words;
  for (const uint8_t z : a) {
    words.push_back(static_cast<uint8_t>(16 * z + 5));
    words.push_back(static_cast<uint8_t>((16 * z + 5) >> 8));
  }
  struct Case {
    const Kernel& kernel;
    const Bytes& src;
    uint32_t shift;
    const uint32_t* crc;
  };
  for (const Case& c : {Case{kKernels[0], a, 0, crc8}, Case{kKernels[3], words, 4, crc16}}) {
    for (uint32_t pattern = 0; pattern < 4; ++pattern) {
      Bytes expected(a.size() * reference::pixel_bytes(c.kernel.format)), actual(expected.size());
      reference::store_mosaic(
          c.kernel.format,
          c.kernel.expected(c.src.data(), 16, 12, pattern, c.shift, kTypical.coefficients), 16, 12,
          expected.data());
      EXPECT_EQ(reference::crc32(expected.data(), expected.size()), c.crc[pattern])
          << "the reference, " << c.kernel.name << " pattern " << pattern;
      c.kernel.convert(actual.data(), c.src.data(), 16, 12, pattern, c.shift, kTypical);
      EXPECT_EQ(reference::crc32(actual.data(), actual.size()), c.crc[pattern])
          << c.kernel.name << " pattern " << pattern;
    }
  }
}

TEST(ColourCorrection, HandWorkedValues) {
  const Bytes src = {200, 100, 100, 50};  // RGGB
  Bytes bgr(12);
  cc_raw8_to_bgr24(bgr.data(), src.data(), 2, 2, 0, kTypical);
  EXPECT_EQ(bgr, Bytes({25, 80, 255, 25, 80, 255, 25, 80, 255, 25, 80, 255}));

  // The mono form limits by the low 16 bits of an unsigned sum: 32768 and more is taken for
  // negative, 65536 starts again at 0.
  struct Case {
    int32_t gain;  // of red, for all three rows; red is 200
    uint8_t y;
  };
  for (const Case& c : {Case{1024, 200}, Case{1311, 255}, Case{-1024, 0}, Case{1024 * 163, 255},
                        Case{1024 * 164, 0}, Case{1024 * 328, 64}}) {
    const ColourMatrix m = {2, {c.gain, 0, 0, c.gain, 0, 0, c.gain, 0, 0}};
    Bytes mono(4);
    cc_raw8_to_mono8(mono.data(), src.data(), 2, 2, 0, m);
    EXPECT_EQ(mono, Bytes(4, c.y)) << "gain " << c.gain;
  }
}

TEST(ColourCorrection, WritesWhatTheReferenceWrites) {
  const std::vector<Matrix> all = matrices();
  const Size sizes[] = {{2, 2}, {3, 2},  {2, 3},  {3, 3},   {4, 2},    {5, 7},
                        {6, 6}, {34, 4}, {67, 5}, {130, 6}, {4100, 2}, {8198, 3}};
  unsigned kind = 0;
  for (const Kernel& kernel : kKernels) {
    for (const Size size : sizes) {
      if (kernel.bits == 12 && size.width % 2 != 0) continue;
      for (size_t i = 0; i < all.size(); ++i) {
        if (size.width > 1000 && i % 5 != 0) continue;
        ColourMatrix m = {static_cast<uint32_t>(i), {}};  // the kind is not read
        std::copy(all[i].begin(), all[i].end(), m.coefficients);
        static const uint32_t kCallersPatterns[] = {0, 1, 2, 3, 255, 0xFFFFFFFF};
        static const uint32_t kShifts[] = {0, 4, 6, 1, 2, 3, 8};
        const uint32_t pattern = kCallersPatterns[kind % 6];
        const uint32_t shift = kernel.shifted ? kShifts[kind % 7] : 0;
        const Bytes src = random_bytes(size.width * kernel.bits / 8 * size.height, kind, kind / 2);
        ++kind;
        expect_conversion(
            describe(kernel.name, size, kernel.format, pattern) + " shift " +
                std::to_string(shift) + " matrix " + std::to_string(i),
            src, size.width * size.height * reference::pixel_bytes(kernel.format),
            [&](uint8_t* dst, const uint8_t* s) {
              kernel.convert(dst, s, static_cast<uint32_t>(size.width),
                             static_cast<uint32_t>(size.height), pattern, shift, m);
              return 0u;
            },
            [&](uint8_t* dst) {
              reference::store_mosaic(kernel.format,
                                      kernel.expected(src.data(), size.width, size.height, pattern,
                                                      shift, m.coefficients),
                                      size.width, size.height, dst);
            });
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(ColourCorrection, IdentityIsTheUncorrectedPicture) {
  const Bytes src = random_bytes(66 * 8, 11), words = random_bytes(2 * 66 * 8, 12);
  for (uint32_t pattern = 0; pattern < 4; ++pattern) {
    Bytes corrected(src.size() * 3), plain(src.size() * 3);
    cc_raw8_to_bgr24(corrected.data(), src.data(), 66, 8, pattern, kIdentity);
    ASSERT_EQ(LumRaw8ImageTransform(plain.data(), src.data(), 66, 8, LUM_FORMAT_BGR24, pattern),
              0u);
    EXPECT_EQ(corrected, plain) << "pattern " << pattern;
    Bytes corrected48(src.size() * 6), plain48(src.size() * 6);
    const LumBitDepthInfo depth = {0, 1, 12, 0, pattern};
    cc_raw16_to_bgr48(corrected48.data(), words.data(), 66, 8, pattern, 4, kIdentity);
    ASSERT_EQ(
        LumRaw16ImageTransformEx(plain48.data(), words.data(), 66, 8, LUM_FORMAT_BGR48, &depth),
        0u);
    EXPECT_EQ(corrected48, plain48) << "pattern " << pattern;
  }
}

TEST(ColourCorrection, TooSmallFramesAreLeftAlone) {
  const Bytes src(64, 9);
  Bytes dst(128, 0xEE);
  const Bytes before = dst;
  for (const Kernel& kernel : kKernels) {
    for (const Size size :
         {Size{1, 4}, Size{4, 1}, Size{0, 4}, Size{4, 0}, Size{0, 0}, Size{3, 2}}) {
      if (size.width == 3 && kernel.bits != 12) continue;  // odd widths are 12-bit packed's limit
      kernel.convert(dst.data(), src.data(), static_cast<uint32_t>(size.width),
                     static_cast<uint32_t>(size.height), 0, 0, kTypical);
      EXPECT_EQ(dst, before) << kernel.name << ' ' << size.width << 'x' << size.height;
    }
  }
}

}  // namespace
}  // namespace lum::test
