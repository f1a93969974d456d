// SPDX-License-Identifier: MIT
// The _CC functions and their matrix objects: known answers, the reference, refusals, relations.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "bayer/colour_correction.h"
#include "direct_support.h"

namespace lum::test {
namespace {

constexpr LumColorCorrection kTypical = {2, {1638, -409, -204, -307, 1536, -204, 0, -512, 1536}};
constexpr LumColorCorrection kIdentity = {3, {1024, 0, 0, 0, 1024, 0, 0, 0, 1024}};

// A call of one of the functions: the exported one, or a level's own way beneath it.
struct Call {
  size_t width, height;
  uint32_t format, pattern;
  LumBitDepthInfo depth;
  LumColorCorrection matrix;

  uint32_t w() const { return static_cast<uint32_t>(width); }
  uint32_t h() const { return static_cast<uint32_t>(height); }
  MosaicFrame frame(uint8_t* dst, const uint8_t* src, uint32_t red) const {
    return {dst, src, w(), h(), red_phase(red), static_cast<Sink>(format)};
  }
  uint32_t shift() const { return depth.alignment == 0 ? 0 : 16 - depth.bitsUsed; }
};

struct Function {
  const char* name;
  size_t bits;  // of a source pixel
  uint32_t formats;
  uint32_t (*exported)(uint8_t* dst, const uint8_t* src, const Call& c);
  void (*at_level)(const Kernels& k, uint8_t* dst, const uint8_t* src, const Call& c);
  void (*expected)(uint8_t* dst, const uint8_t* src, const Call& c);
};

void expect_mosaic(uint8_t* dst, const Call& c, uint32_t pattern, const reference::Sampler& sample,
                   int scale) {
  const bool deep = reference::is_deep(c.format);
  reference::store_mosaic(
      c.format,
      reference::correct(reference::bayer(c.width, c.height, pattern, sample),
                         c.matrix.coefficients, deep ? 10 : scale, deep ? 65535 : 255),
      c.width, c.height, dst);
}

const Function kRaw8 = {"LumRaw8ImageTransform_CC",
                        8,
                        7,
                        [](uint8_t* dst, const uint8_t* src, const Call& c) {
                          return LumRaw8ImageTransform_CC(dst, src, c.w(), c.h(), c.format,
                                                          c.pattern, &c.matrix);
                        },
                        [](const Kernels& k, uint8_t* dst, const uint8_t* src, const Call& c) {
                          correct_raw8(k, c.frame(dst, src, c.pattern), c.matrix);
                        },
                        [](uint8_t* dst, const uint8_t* src, const Call& c) {
                          expect_mosaic(dst, c, c.pattern, reference::bytes_of(src, c.width), 10);
                        }};
const Function kRaw12 = {
    "LumRaw12ImageTransform_CC",
    12,
    11,
    [](uint8_t* dst, const uint8_t* src, const Call& c) {
      return LumRaw12ImageTransform_CC(dst, src, c.w(), c.h(), c.format, c.pattern, &c.matrix);
    },
    [](const Kernels& k, uint8_t* dst, const uint8_t* src, const Call& c) {
      correct_raw12(k, c.frame(dst, src, c.pattern), c.matrix);
    },
    [](uint8_t* dst, const uint8_t* src, const Call& c) {
      const reference::Sampler sample = reference::packed12_samples(src, c.width);
      const int up = reference::is_deep(c.format) ? 4 : 0;
      expect_mosaic(
          dst, c, c.pattern, [&](size_t x, size_t y) { return sample(x, y) << up; }, 14);
    }};
const Function kRaw16 = {
    "LumRaw16ImageTransform_CC",
    16,
    11,
    [](uint8_t* dst, const uint8_t* src, const Call& c) {
      return LumRaw16ImageTransform_CC(dst, src, c.w(), c.h(), c.format, &c.depth, &c.matrix);
    },
    [](const Kernels& k, uint8_t* dst, const uint8_t* src, const Call& c) {
      correct_raw16(k, c.frame(dst, src, c.depth.bayerPattern), c.shift(), c.depth.endianness,
                    c.matrix);
    },
    [](uint8_t* dst, const uint8_t* src, const Call& c) {
      expect_mosaic(dst, c, c.depth.bayerPattern,
                    reference::shifted_words(src, c.width, c.shift(), c.depth.endianness != 0), 18);
    }};

TEST(DirectCorrection, KnownAnswers) {
  struct Case {
    const Function& function;
    Bytes src;
    uint32_t pattern, format, crc;
  };
  const Bytes a = frame_a(), r = ramp7(288), w = words_w();
  const Case cases[] = {
      {kRaw8, a, 0, 1, 0x42E323F3},  {kRaw8, a, 1, 1, 0xAF63BA96},  {kRaw8, a, 2, 1, 0x2F399CFA},
      {kRaw8, a, 3, 1, 0xF6757CE1},  {kRaw8, a, 0, 0, 0xFA076CC7},  {kRaw8, a, 0, 3, 0xB521E7BA},
      {kRaw8, a, 0, 5, 0x2ADD3E87},  {kRaw8, a, 0, 6, 0x9FD5A33E},  {kRaw12, r, 1, 1, 0x9FA9FF67},
      {kRaw12, r, 1, 0, 0xC83108B2}, {kRaw12, r, 1, 9, 0x6CB00A7D}, {kRaw12, r, 1, 10, 0x19BF0818},
      {kRaw12, r, 1, 7, 0x4D33580A}, {kRaw12, r, 1, 8, 0x929B573D}, {kRaw16, w, 2, 1, 0x3C6E06CE},
      {kRaw16, w, 2, 0, 0x198B474C}, {kRaw16, w, 2, 9, 0x8D82B7F4}, {kRaw16, w, 2, 10, 0x4288B440},
      {kRaw16, w, 2, 7, 0xB5DDCED8}, {kRaw16, w, 2, 8, 0x1493ADFA},
  };
  for (const Case& c : cases) {
    const Call call = {16, 12, c.format, c.pattern, {0, 1, 12, 0, c.pattern}, kTypical};
    const std::string what = describe(c.function.name, {16, 12}, c.format, c.pattern) + ", ";
    Bytes out(192 * reference::pixel_bytes(c.format));
    c.function.expected(out.data(), c.src.data(), call);
    EXPECT_EQ(crc(out), c.crc) << what << "the reference";
    EXPECT_EQ(c.function.exported(out.data(), c.src.data(), call), 0u);
    EXPECT_EQ(crc(out), c.crc) << what << "the entry";
    at_every_level([&](const Kernels& k, const std::string& level) {
      std::fill(out.begin(), out.end(), uint8_t{0});
      c.function.at_level(k, out.data(), c.src.data(), call);
      EXPECT_EQ(crc(out), c.crc) << what << level;
    });
  }
  for (uint32_t pattern = 0; pattern < 4; ++pattern) {
    Bytes out(576);
    EXPECT_EQ(LumRaw8ToBGR_CC(out.data(), a.data(), 16, 12, pattern, &kTypical), 0u);
    EXPECT_EQ(crc(out), cases[pattern].crc) << "LumRaw8ToBGR_CC pattern " << pattern;
  }
}

TEST(DirectCorrection, FinishedPixelsKnownAnswers) {
  for (const bool words : {false, true}) {
    const Bytes src = words ? words_w() : frame_a();
    const uint32_t known = words ? 0x04B52288 : 0xA4993EEE;
    Bytes out(src.size());
    EXPECT_EQ(LumBGRToBGR_CC(out.data(), src.data(), 64, words ? 2 : 1, &kTypical), 0u);
    EXPECT_EQ(crc(out), known);
    at_every_level([&](const Kernels& k, const std::string& level) {
      out = src;  // in place
      (words ? correct_bgr48 : correct_bgr24)(k, out.data(), out.data(), 64, kTypical);
      EXPECT_EQ(crc(out), known) << level;
    });
  }
}

TEST(DirectCorrection, EveryLevelWritesWhatTheReferenceWrites) {
  const std::vector<Matrix> all = matrices();
  const Size sizes[] = {{2, 2}, {4, 2}, {2, 4}, {6, 6}, {34, 4}, {66, 6}, {130, 4}, {4100, 2}};
  static const uint32_t kDepths[] = {16, 12, 8, 11, 9, 10, 14};
  unsigned kind = 0;
  for (const Function& function : {kRaw8, kRaw12, kRaw16}) {
    for (const Size size : sizes) {
      for (uint32_t format = 0; format < function.formats; ++format) {
        for (unsigned repeat = 0; repeat < (size.width > 1000 ? 1u : 4u); ++repeat, ++kind) {
          const uint32_t pattern = kPatterns[kind % 5];
          Call c = {size.width,
                    size.height,
                    format,
                    pattern,
                    {7, kind % 3 == 0 ? 0u : 1u, kDepths[kind % 7], kind / 2 % 2, pattern & 3},
                    {2 + kind % 2, {}}};
          const Matrix& m = all[kind * 5 % all.size()];
          std::copy(m.begin(), m.end(), c.matrix.coefficients);
          const Bytes src = random_bytes(size.width * function.bits / 8 * size.height, kind, kind);
          const size_t bytes = size.width * size.height * reference::pixel_bytes(format);
          const std::string label = describe(function.name, size, format, pattern) + " alignment " +
                                    std::to_string(c.depth.alignment) + " bits " +
                                    std::to_string(c.depth.bitsUsed) + " ";
          const auto expected = [&](uint8_t* dst) { function.expected(dst, src.data(), c); };
          at_every_level([&](const Kernels& k, const std::string& level) {
            expect_conversion(
                label + level, src, bytes,
                [&](uint8_t* dst, const uint8_t* s) {
                  function.at_level(k, dst, s, c);
                  return 0u;
                },
                expected);
          });
          expect_conversion(
              label + "entry", src, bytes,
              [&](uint8_t* dst, const uint8_t* s) { return function.exported(dst, s, c); },
              expected);
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

// Apart and in place, every level, about the block sizes.
TEST(DirectCorrection, FinishedPixelsAreWrittenOnce) {
  const std::vector<Matrix> all = matrices();
  unsigned kind = 0;
  for (const bool words : {false, true}) {
    const size_t pixel = words ? 6 : 3;
    for (size_t n : {1, 2, 3, 7, 8, 9, 15, 16, 31, 33, 63, 64, 65, 100, 127, 129, 200, 1000}) {
      for (size_t i = 0; i < all.size(); i += 1 + n / 64, ++kind) {
        LumColorCorrection m = {3, {}};
        std::copy(all[i].begin(), all[i].end(), m.coefficients);
        const Bytes src = random_bytes(n * pixel, kind, kind);
        RowArgs args;
        args.matrix = m.coefficients;
        args.scale = 10;
        Bytes expected(src.size());
        const Source source = words ? Source::bgr48_corrected : Source::bgr24_corrected;
        ASSERT_TRUE(reference::row(source, words ? Sink::bgr48 : Sink::bgr24, expected.data(),
                                   src.data(), nullptr, n, args));
        const uint32_t count = static_cast<uint32_t>(n);
        expect_conversion(
            "LumBGRToBGR_CC", src, src.size(),
            [&](uint8_t* dst, const uint8_t* s) {
              return LumBGRToBGR_CC(dst, s, count, words ? 2 : 1, &m);
            },
            [&](uint8_t* dst) { std::copy(expected.begin(), expected.end(), dst); });
        at_every_level([&](const Kernels& k, const std::string& level) {
          const Arena arena(src.size());
          uint8_t* const at = arena.place(src.size(), kind % 2 == 0);
          std::copy(src.begin(), src.end(), at);
          (words ? correct_bgr48 : correct_bgr24)(k, at, at, count, m);
          EXPECT_TRUE(std::equal(expected.begin(), expected.end(), at))
              << (words ? "words" : "bytes") << " in place, " << n << " pixels, matrix " << i
              << ", level " << level;
        });
        if (HasFailure()) return;
      }
    }
  }
}

TEST(DirectCorrection, IdentityIsTheUncorrectedPicture) {
  const Bytes src = random_bytes(66 * 8, 11);
  for (uint32_t format = 0; format <= 6; ++format) {
    for (const uint32_t pattern : kPatterns) {
      Bytes corrected(src.size() * reference::pixel_bytes(format)), plain(corrected.size());
      ASSERT_EQ(LumRaw8ImageTransform_CC(corrected.data(), src.data(), 66, 8, format, pattern,
                                         &kIdentity),
                0u);
      ASSERT_EQ(LumRaw8ImageTransform(plain.data(), src.data(), 66, 8, format, pattern), 0u);
      EXPECT_EQ(corrected, plain) << "format " << format << " pattern " << pattern;
    }
  }
}

TEST(DirectCorrection, MonoAgreesWithTheDispatcher) {
  const Bytes src = random_bytes(34 * 6, 12);
  for (uint32_t pattern = 0; pattern < 4; ++pattern) {
    const uint32_t there = pattern == 1 || pattern == 2 ? 3 - pattern : pattern;
    Bytes direct(src.size()), dispatched(src.size());
    ASSERT_EQ(LumRaw8ImageTransform_CC(direct.data(), src.data(), 34, 6, 0, pattern, &kTypical),
              0u);
    cc_raw8_to_mono8(dispatched.data(), src.data(), 34, 6, there, kTypical);
    EXPECT_EQ(direct, dispatched) << "pattern " << pattern;
  }
}

TEST(DirectCorrection, MatrixObjects) {
  const float floats[9] = {1.6f, -0.4f, -0.2f, -0.3f, 1.5f, -0.2f, 0, -0.5f, 1.5f};
  LumColorCorrection* made = nullptr;
  ASSERT_EQ(LumCreateColorCorrectionMatrix_Int8(&made, floats), 0u);
  EXPECT_EQ(made->kind, 2u);
  EXPECT_TRUE(std::equal(made->coefficients, made->coefficients + 9, kTypical.coefficients));
  EXPECT_EQ(LumDestroyColorCorrection(made), 0u);
  EXPECT_EQ(LumDestroyColorCorrection(nullptr), bad_argument(1));

  const float far[9] = {3e9f,       -3e9f,       2097151.9f,    -2097152.f, 2097152.f,
                        0.0009765f, -0.0009765f, 0.0019531251f, -0.f};
  const int32_t fixed[9] = {INT32_MAX, INT32_MIN, 2147483520, INT32_MIN, INT32_MAX, 0, 0, 2, 0};
  ASSERT_EQ(LumCreateColorCorrectionMatrix_Int8(&made, far), 0u);
  EXPECT_TRUE(std::equal(fixed, fixed + 9, made->coefficients));
  EXPECT_EQ(LumDestroyColorCorrection(made), 0u);

  LumColorCorrection mine;
  made = &mine;
  EXPECT_EQ(LumCreateColorCorrectionMatrix_Int8(nullptr, nullptr), bad_argument(1));
  EXPECT_EQ(LumCreateColorCorrectionMatrix_Int8(&made, nullptr), bad_argument(2));
  for (size_t i = 0; i < 9; ++i) {
    for (const float bad : {NAN, INFINITY, -INFINITY}) {
      float spoiled[9] = {};
      spoiled[i] = bad;
      EXPECT_EQ(LumCreateColorCorrectionMatrix_Int8(&made, spoiled), bad_argument(2));
    }
  }
  EXPECT_EQ(made, &mine) << "a refusal wrote the pointer";
}

struct CorrectionArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t width, height, format, pattern;
  LumBitDepthInfo depth;
  const LumBitDepthInfo* depth_given;
  LumColorCorrection own;
  const LumColorCorrection* matrix;
};
using A = CorrectionArgs;

std::vector<Refusal<A>> size_refusals() {
  return {{"no width", [](A& a) { a.width = 0; }, bad_argument(3)},
          {"no height", [](A& a) { a.height = 0; }, bad_argument(4)},
          {"odd width", [](A& a) { a.width = 3; }, bad_argument(3)},
          {"odd height", [](A& a) { a.height = 3; }, bad_argument(4)}};
}
const Refusal<A> kNoDst = {"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)};
const Refusal<A> kNoSrc = {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)};

template <class CallFunction>
void expect_correction_refusals(const std::vector<std::vector<Refusal<A>>>& parts,
                                uint32_t matrix_code, CallFunction call) {
  std::vector<Refusal<A>> refusals;
  for (const auto& part : parts) refusals.insert(refusals.end(), part.begin(), part.end());
  static const LumColorCorrection kOtherKinds[] = {{1, {}}, {4, {}}};
  const Refusal<A> matrix[] = {
      {"matrix of kind 1", [](A& a) { a.matrix = &kOtherKinds[0]; }, matrix_code},
      {"matrix of kind 4", [](A& a) { a.matrix = &kOtherKinds[1]; }, matrix_code},
      {"no matrix", [](A& a) { a.matrix = nullptr; }, matrix_code}};
  refusals.insert(refusals.end(), std::begin(matrix), std::end(matrix));
  const Bytes src(256, 1);
  Bytes dst(512, 0xEE);
  const LumBitDepthInfo depth = {0, 1, 12, 0, 0};
  expect_refusals<A>({dst.data(), src.data(), 4, 4, 1, 0, depth, &depth, kTypical, &kTypical},
                     refusals, dst, [&](const A& a) {
                       A copy = a;
                       if (copy.depth_given != nullptr) copy.depth_given = &copy.depth;
                       return call(copy);
                     });
}

TEST(DirectCorrection, RefusesInOrderAndWritesNothing) {
  const Refusal<A> pattern = {"pattern 4", [](A& a) { a.pattern = 4; }, bad_argument(5)};
  const Refusal<A> above6 = {"format 7", [](A& a) { a.format = 7; }, kNotImplemented};
  const Refusal<A> above10 = {"format 11", [](A& a) { a.format = 11; }, kNotImplemented};
  expect_correction_refusals(
      {{kNoDst, kNoSrc}, size_refusals(), {pattern}}, bad_argument(6), [](const A& a) {
        return LumRaw8ToBGR_CC(a.dst, a.src, a.width, a.height, a.pattern, a.matrix);
      });
  expect_correction_refusals({{kNoDst, kNoSrc}, size_refusals(), {pattern, above6}},
                             bad_argument(7), [](const A& a) {
                               return LumRaw8ImageTransform_CC(a.dst, a.src, a.width, a.height,
                                                               a.format, a.pattern, a.matrix);
                             });
  expect_correction_refusals({{kNoDst, kNoSrc}, size_refusals(), {pattern, above10}},
                             bad_argument(7), [](const A& a) {
                               return LumRaw12ImageTransform_CC(a.dst, a.src, a.width, a.height,
                                                                a.format, a.pattern, a.matrix);
                             });
  const std::vector<Refusal<A>> record = {
      {"alignment 2", [](A& a) { a.depth.alignment = 2; }, kNotImplemented},
      {"7 bits", [](A& a) { a.depth.bitsUsed = 7; }, kNotImplemented},
      {"17 bits", [](A& a) { a.depth.bitsUsed = 17; }, kNotImplemented},
      {"the record's pattern", [](A& a) { a.depth.bayerPattern = 4; }, kNotImplemented},
      above10,
      {"byte order", [](A& a) { a.depth.endianness = 2; }, kNotImplemented}};
  expect_correction_refusals(
      {{kNoDst, kNoSrc, {"no record", [](A& a) { a.depth_given = nullptr; }, bad_argument(6)}},
       size_refusals(),
       record},
      bad_argument(7), [](const A& a) {
        return LumRaw16ImageTransform_CC(a.dst, a.src, a.width, a.height, a.format, a.depth_given,
                                         a.matrix);
      });
  expect_correction_refusals({{kNoDst,
                               kNoSrc,
                               {"no pixels", [](A& a) { a.width = 0; }, bad_argument(3)},
                               {"3 bytes a sample", [](A& a) { a.format = 3; }, bad_argument(4)},
                               {"0 bytes a sample", [](A& a) { a.format = 0; }, bad_argument(4)}}},
                             bad_argument(5), [](const A& a) {
                               return LumBGRToBGR_CC(a.dst, a.src, a.width, a.format, a.matrix);
                             });
}

}  // namespace
}  // namespace lum::test
