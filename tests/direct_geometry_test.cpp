// SPDX-License-Identifier: MIT
// Flips, copies between pitches, binning and resampling: known answers, relations, the reference,
// refusals.
#include <gtest/gtest.h>

#include "direct_support.h"

namespace lum::test {
namespace {

// ---- Flip
TEST(DirectFlip, KnownAnswers) {
  const uint32_t expected[8] = {0x5C14457C, 0x46915A6A, 0x158978CE, 0x0C67C5D8,
                                0x74C23F37, 0xD8F107F1, 0x26AE018B, 0x20CCBC74};
  const Bytes a = frame_a();
  for (uint32_t mode = 0; mode < 8; ++mode) {
    Bytes dst(a.size());
    reference::flip_image(dst.data(), a.data(), 8, 12, 2, mode);
    EXPECT_EQ(crc(dst), expected[mode]) << "the reference, mode " << mode;
    EXPECT_EQ(LumFlip(dst.data(), a.data(), 8, 12, 2, mode), 0u);
    EXPECT_EQ(crc(dst), expected[mode]) << "mode " << mode;
  }
}

// The image between inaccessible pages, flipped where it lies.
void expect_flip_in_place(const std::string& label, const Bytes& src, const Bytes& expected,
                          const std::function<void(uint8_t*)>& call) {
  for (const bool at_end : {false, true}) {
    const Arena arena(src.size());
    const Bytes before = random_bytes(arena.size(), src.size());
    std::copy(before.begin(), before.end(), arena.begin());
    uint8_t* const image = arena.place(src.size(), at_end);
    std::copy(src.begin(), src.end(), image);
    call(image);
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), image)) << label << " in place";
    std::copy(before.begin() + (image - arena.begin()),
              before.begin() + (image - arena.begin()) + static_cast<ptrdiff_t>(src.size()), image);
    ASSERT_TRUE(std::equal(before.begin(), before.end(), arena.begin())) << label << " about it";
  }
}

TEST(DirectFlip, WritesWhatTheReferenceWritesAtEveryLevelAndInPlace) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    for (uint32_t bytes = 1; bytes <= 16; ++bytes) {
      for (const Size size :
           {Size{1, 1}, Size{1, 5}, Size{7, 1}, Size{2, 2}, Size{6, 4}, Size{15, 17}, Size{16, 64},
            Size{33, 31}, Size{64, 16}, Size{65, 66}, Size{96, 3}, Size{127, 2}, Size{128, 65},
            Size{131, 130}, Size{200, 2}, Size{301, 1}, Size{67, 421}}) {
        if (quick() && size.width * size.height > 4000) continue;
        for (uint32_t mode = 0; mode < 8; ++mode) {
          const Bytes src = random_bytes(size.width * size.height * bytes, mode);
          const auto call = [&](uint8_t* dst, const uint8_t* s) {
            flip(kernels, dst, s, static_cast<uint32_t>(size.width),
                 static_cast<uint32_t>(size.height), bytes, mode);
            return 0u;
          };
          const std::string label = describe(level + " flip", size, mode, bytes);
          Bytes expected(src.size());
          reference::flip_image(expected.data(), src.data(), size.width, size.height, bytes, mode);
          expect_conversion(label, src, src.size(), call, [&](uint8_t* dst) {
            std::copy(expected.begin(), expected.end(), dst);
          });
          if (HasFatalFailure()) return;
          if (mode >= 4) continue;
          expect_flip_in_place(label, src, expected, [&](uint8_t* image) { call(image, image); });
          if (HasFatalFailure()) return;
        }
      }
    }
  });
}

// As images are that are too large for the cache.
TEST(DirectFlip, TurnsStreamedImages) {
  struct Case {
    Size size;
    uint32_t bytes, mode;
  };
  for (const Case& c : {Case{{603, 391}, 1, 5},
                        {{512, 451}, 2, 6},
                        {{309, 337}, 3, 4},
                        {{256, 131}, 8, 7},
                        {{131, 179}, 9, 5},
                        {{197, 151}, 5, 6},
                        {{131, 149}, 12, 4},
                        {{4096, 131}, 1, 5},
                        {{2048, 67}, 2, 6}}) {
    const Bytes src = random_bytes(c.size.width * c.size.height * c.bytes, c.bytes);
    Bytes expected(src.size());
    reference::flip_image(expected.data(), src.data(), c.size.width, c.size.height, c.bytes,
                          c.mode);
    at_every_level([&](const Kernels& kernels, const std::string& level) {
      Kernels streaming = kernels;
      streaming.stream_above = 1;
      expect_conversion(
          describe(level + " flip", c.size, c.mode, c.bytes), src, src.size(),
          [&](uint8_t* dst, const uint8_t* s) {
            flip(streaming, dst, s, static_cast<uint32_t>(c.size.width),
                 static_cast<uint32_t>(c.size.height), c.bytes, c.mode);
            return 0u;
          },
          [&](uint8_t* dst) { std::copy(expected.begin(), expected.end(), dst); });
    });
    if (HasFatalFailure()) return;
  }
}

TEST(DirectFlip, TurnsComeBack) {
  const Bytes src = random_bytes(30 * 14 * 3, 5);
  const auto turned = [](const Bytes& image, uint32_t w, uint32_t h, uint32_t mode) {
    Bytes out(image.size());
    EXPECT_EQ(LumFlip(out.data(), image.data(), w, h, 3, mode), 0u);
    return out;
  };
  EXPECT_EQ(turned(turned(src, 30, 14, 3), 30, 14, 3), src);
  EXPECT_EQ(turned(turned(src, 30, 14, 5), 14, 30, 6), src);
  Bytes image = src;
  for (int i = 0; i < 4; ++i) image = turned(image, i % 2 ? 14 : 30, i % 2 ? 30 : 14, 5);
  EXPECT_EQ(image, src);
}

struct FlipArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t width, height, bytes, mode;
};
TEST(DirectFlip, RefusesInOrder) {
  using A = FlipArgs;
  static Bytes dst(64, 0xEE);
  const Bytes src(64, 1);
  const auto call = [](const A& a) {
    return LumFlip(a.dst, a.src, a.width, a.height, a.bytes, a.mode);
  };
  expect_refusals<A>({dst.data(), src.data(), 4, 2, 3, 5},
                     {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
                      {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
                      {"no width", [](A& a) { a.width = 0; }, bad_argument(3)},
                      {"no height", [](A& a) { a.height = 0; }, bad_argument(4)},
                      {"no bytes", [](A& a) { a.bytes = 0; }, bad_argument(5)},
                      {"large pixels", [](A& a) { a.bytes = 17; }, bad_argument(5)},
                      {"mode", [](A& a) { a.mode = 8; }, kNotImplemented}},
                     dst, call);
  dst.assign(64, 0xEE);
  EXPECT_EQ(call({dst.data(), dst.data(), 4, 2, 3, 4}), bad_argument(2)) << "in place";
  EXPECT_EQ(dst, Bytes(64, 0xEE));
}

// ---- Copies between pitches
TEST(DirectCopyRows, CopiesRowsAndNothingBetween) {
  struct Case {
    uint32_t row_bytes, rows, dst_pitch, src_pitch;
  };
  for (const Case& c : {Case{1, 1, 1, 1}, Case{5, 4, 5, 9}, Case{64, 7, 100, 64},
                        Case{63, 9, 77, 80}, Case{640, 33, 640, 700}}) {
    const size_t src_bytes = size_t{c.src_pitch} * (c.rows - 1) + c.row_bytes;
    const size_t dst_bytes = size_t{c.dst_pitch} * (c.rows - 1) + c.row_bytes;
    const Bytes src = random_bytes(src_bytes, c.rows);
    const auto copy = [&](uint8_t* dst) {
      reference::copy_rows(dst, src.data(), c.row_bytes, c.rows, c.dst_pitch, c.src_pitch);
    };
    expect_conversion(
        "rows of " + std::to_string(c.row_bytes), src, dst_bytes,
        [&](uint8_t* dst, const uint8_t* s) {
          return LumCopyRows(dst, s, c.row_bytes, c.rows, c.dst_pitch, c.src_pitch);
        },
        copy);
    // In place, over the same bytes.
    Bytes image = random_bytes(std::max(src_bytes, dst_bytes), 1);
    std::copy(src.begin(), src.end(), image.begin());
    Bytes moved = image;
    ASSERT_EQ(
        LumCopyRows(moved.data(), moved.data(), c.row_bytes, c.rows, c.dst_pitch, c.src_pitch), 0u);
    copy(image.data());
    ASSERT_EQ(moved, image) << "in place, rows of " << c.row_bytes;
  }
}

struct CopyArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t row_bytes, rows, dst_pitch, src_pitch;
};
TEST(DirectCopyRows, RefusesInOrder) {
  using A = CopyArgs;
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  expect_refusals<A>({dst.data(), src.data(), 8, 4, 9, 10},
                     {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
                      {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
                      {"no bytes", [](A& a) { a.row_bytes = 0; }, bad_argument(3)},
                      {"no rows", [](A& a) { a.rows = 0; }, bad_argument(4)}},
                     dst, [](const A& a) {
                       return LumCopyRows(a.dst, a.src, a.row_bytes, a.rows, a.dst_pitch,
                                          a.src_pitch);
                     });
  dst.assign(64, 0xEE);
  EXPECT_EQ(LumCopyRows(dst.data(), src.data(), 8, 4, 7, 7), bad_argument(5));
  EXPECT_EQ(LumCopyRows(dst.data(), src.data(), 8, 4, 8, 7), bad_argument(6));
  EXPECT_EQ(dst, Bytes(64, 0xEE));
}

// ---- Binning
TEST(DirectBin, KnownAnswers) {
  const Bytes a = frame_a(), w = words_w();
  struct Case {
    const Bytes& src;
    uint32_t width, height, channels, bytes, fx, fy, crc;
  };
  for (const Case& c :
       {Case{a, 16, 12, 1, 1, 2, 2, 0x6C76D917}, Case{a, 16, 12, 1, 1, 3, 2, 0xBE3E36C0},
        Case{a, 4, 12, 4, 1, 2, 3, 0x911D6215}, Case{w, 16, 12, 1, 2, 2, 2, 0x4BE098A8}}) {
    Bytes dst(size_t{c.width / c.fx} * (c.height / c.fy) * c.channels * c.bytes);
    reference::bin(dst.data(), c.src.data(), c.width, c.height, c.channels, c.bytes, c.fx, c.fy);
    EXPECT_EQ(crc(dst), c.crc) << "the reference";
    EXPECT_EQ(LumBin(dst.data(), c.src.data(), c.width, c.height, c.channels, c.bytes, c.fx, c.fy),
              0u);
    EXPECT_EQ(crc(dst), c.crc) << c.fx << "x" << c.fy;
  }
}

void expect_bin(const Kernels& kernels, const std::string& level, Size size, PixelShape pixel,
                uint32_t fx, uint32_t fy, unsigned kind) {
  const Bytes src = random_bytes(size.width * size.height * pixel.bytes(), kind, kind);
  expect_conversion(
      describe(level + " bin", size, fx, fy) + " channels " + std::to_string(pixel.channels) +
          " bytes " + std::to_string(pixel.sample_bytes),
      src, (size.width / fx) * (size.height / fy) * pixel.bytes(),
      [&](uint8_t* dst, const uint8_t* s) {
        bin(kernels, dst, s, static_cast<uint32_t>(size.width), static_cast<uint32_t>(size.height),
            pixel.channels, pixel.sample_bytes, fx, fy);
        return 0u;
      },
      [&](uint8_t* dst) {
        reference::bin(dst, src.data(), size.width, size.height, pixel.channels, pixel.sample_bytes,
                       fx, fy);
      });
}

TEST(DirectBin, WritesWhatTheReferenceWritesAtEveryLevel) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    unsigned kind = 0;
    for (const uint32_t bytes : {1u, 2u}) {
      for (uint32_t fx = 1; fx <= 16; ++fx) {
        for (uint32_t fy = 1; fy <= 16; ++fy) {
          // Powers of two have kernels of their own from kBlockSamples pixels on.
          const size_t n = (fx & (fx - 1)) == 0 && kind % 4 != 0 ? 77 : 37;
          expect_bin(kernels, level, {fx * n + fx / 2, fy}, {1, bytes}, fx, fy, kind++);
          if (HasFatalFailure()) return;
        }
      }
      for (const uint32_t channels : {1u, 2u, 3u, 4u}) {
        for (const Size factor :
             {Size{1, 1}, {1, 2}, {1, 3}, {2, 1}, {2, 2}, {2, 3}, {3, 3}, {4, 2}, {6, 1}}) {
          for (const size_t width : {6, 16, 67, 135, 5000}) {
            expect_bin(kernels, level, {width, 7}, {channels, bytes},
                       static_cast<uint32_t>(factor.width), static_cast<uint32_t>(factor.height),
                       kind++);
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  });
}

// Every sum that samples can have, over every number of samples.
TEST(DirectBin, DividesExactly) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    for (uint32_t fx = 1; fx <= 16; ++fx) {
      for (uint32_t fy = std::max(fx, 2u); fy <= 16; ++fy) {
        const uint32_t n = fx * fy;
        std::vector<uint16_t> sums(255 * n + 1 + kBlockSamples);
        std::vector<uint32_t> deep(sums.size());
        for (size_t i = 0; i < sums.size(); ++i) {
          sums[i] = static_cast<uint16_t>(i);
          // About the multiples of n, where a quotient is most easily missed.
          deep[i] = static_cast<uint32_t>(std::min<uint64_t>(65535ull * n, i * 257 + i % 3));
        }
        const size_t count = sums.size() - kBlockSamples;
        Bytes bytes(count), words(2 * count);
        kernels.direct.divide8(bytes.data(), sums.data(), count, n);
        kernels.direct.divide16(words.data(), deep.data(), count, n);
        for (size_t i = 0; i < count; ++i) {
          ASSERT_EQ(bytes[i], (i + n / 2) / n) << level << " " << i << " / " << n;
          ASSERT_EQ(static_cast<uint32_t>(sample(words.data(), i, 2)), (deep[i] + n / 2) / n)
              << level << " " << deep[i] << " / " << n;
        }
      }
    }
  });
}

struct BinArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t width, height, channels, bytes, fx, fy;
};
TEST(DirectBin, RefusesInOrder) {
  using A = BinArgs;
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  expect_refusals<A>({dst.data(), src.data(), 4, 4, 1, 1, 2, 2},
                     {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
                      {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
                      {"no width", [](A& a) { a.width = 0; }, bad_argument(3)},
                      {"no height", [](A& a) { a.height = 0; }, bad_argument(4)},
                      {"no channels", [](A& a) { a.channels = 0; }, bad_argument(5)},
                      {"five channels", [](A& a) { a.channels = 5; }, bad_argument(5)},
                      {"bytes of a sample", [](A& a) { a.bytes = 3; }, bad_argument(6)},
                      {"no factor x", [](A& a) { a.fx = 0; }, bad_argument(7)},
                      {"factor x", [](A& a) { a.fx = 17; }, bad_argument(7)},
                      {"no factor y", [](A& a) { a.fy = 0; }, bad_argument(8)},
                      {"factor y", [](A& a) { a.fy = 17; }, bad_argument(8)},
                      {"narrow", [](A& a) { a.fx = 5; }, bad_argument(3)},
                      {"low", [](A& a) { a.fy = 5; }, bad_argument(4)}},
                     dst, [](const A& a) {
                       return LumBin(a.dst, a.src, a.width, a.height, a.channels, a.bytes, a.fx,
                                     a.fy);
                     });
}

// ---- Resampling
TEST(DirectResample, KnownAnswers) {
  const Bytes a = frame_a(), b = frame_b(), w = words_w();
  for (const auto& [mode, expected] : {std::pair{0u, 0xEA428990u}, {1u, 0xD9EC5BD5u}}) {
    Bytes dst(25);
    EXPECT_EQ(LumResampleRow(dst.data(), &a[5 * 16], 25, 16, 1, 1, -0x4000, 0xA000, mode), 0u);
    EXPECT_EQ(crc(dst), expected) << "row, mode " << mode;
    reference::resample_row(dst.data(), &a[5 * 16], 25, 16, {1, 1}, -0x4000, 0xA000, mode);
    EXPECT_EQ(crc(dst), expected) << "the reference, mode " << mode;
  }
  struct Case {
    const Bytes& src;
    Size from, to;
    PixelShape pixel;
    uint32_t mode, crc;
  };
  for (const Case& c : {Case{b, {16, 12}, {25, 7}, {1, 1}, 0, 0x3FDCE000},
                        Case{b, {16, 12}, {25, 7}, {1, 1}, 1, 0x75E9EA00},
                        Case{b, {4, 12}, {7, 20}, {4, 1}, 1, 0x41A21575},
                        Case{w, {16, 12}, {11, 30}, {1, 2}, 1, 0x04ECED65}}) {
    Bytes dst(c.to.width * c.to.height * c.pixel.bytes());
    reference::resize(dst.data(), c.src.data(), c.to, c.from, c.pixel, c.mode);
    EXPECT_EQ(crc(dst), c.crc) << "the reference";
    EXPECT_EQ(LumResize(dst.data(), c.src.data(), static_cast<uint32_t>(c.to.width),
                        static_cast<uint32_t>(c.to.height), static_cast<uint32_t>(c.from.width),
                        static_cast<uint32_t>(c.from.height), c.pixel.channels,
                        c.pixel.sample_bytes, c.mode),
              0u);
    EXPECT_EQ(crc(dst), c.crc) << "to " << c.to.width;
  }
}

TEST(DirectResample, RowsAreWhatTheReferenceMakesAtEveryLevel) {
  struct Way {
    int32_t position;
    uint32_t step;
  };
  at_every_level([](const Kernels& kernels, const std::string& level) {
    unsigned kind = 0;
    for (const PixelShape pixel :
         {PixelShape{1, 1}, {2, 1}, {3, 1}, {4, 1}, {1, 2}, {2, 2}, {3, 2}, {4, 2}}) {
      for (const uint32_t count : {1u, 2u, 40u, 700u}) {
        // The last of them in more than one tile.
        for (const uint32_t n : {1u, 33u, 64u, 600u, pixel.bytes() % 2 != 0 ? 9000u : 4200u}) {
          for (const Way way : {Way{0, 0x10000},
                                {-0x4000, 0xA000},
                                {0xC000, 0x8000},
                                {0x4000, 0x18000},
                                {0x8000, 0x20000},
                                {-0x1234567, 0xF0F1},
                                {0x1111, 0x12F3B},
                                {0x5678, 0x321},
                                {-0x300000, 0x3C123},
                                {0x7FFFFFFF, 1},
                                {INT32_MIN, 0x1000000},
                                {-1, UINT32_MAX},
                                {0x1234, 0}}) {
            for (const uint32_t mode : {0u, 1u}) {
              const Bytes src = random_bytes(count * pixel.bytes(), kind, kind);
              ++kind;
              expect_conversion(
                  level + " " + std::to_string(count) + " to " + std::to_string(n) + " channels " +
                      std::to_string(pixel.channels) + " bytes " +
                      std::to_string(pixel.sample_bytes) + " step " + std::to_string(way.step),
                  src, n * pixel.bytes(),
                  [&](uint8_t* dst, const uint8_t* s) {
                    resample_row(kernels, dst, s, n, count, pixel, way.position, way.step,
                                 static_cast<Resampling>(mode));
                    return 0u;
                  },
                  [&](uint8_t* dst) {
                    reference::resample_row(dst, src.data(), n, count, pixel, way.position,
                                            way.step, mode);
                  });
              if (HasFatalFailure()) return;
            }
          }
        }
      }
    }
  });
}

TEST(DirectResample, FramesAreWhatTheReferenceMakesAtEveryLevel) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    unsigned kind = 0;
    for (const PixelShape pixel :
         {PixelShape{1, 1}, {2, 1}, {3, 1}, {4, 1}, {1, 2}, {2, 2}, {3, 2}, {4, 2}}) {
      for (const Size from : {Size{1, 1}, Size{16, 12}, Size{131, 9}, Size{1100, 5}}) {
        for (const Size to : {Size{1, 1}, Size{16, 12}, Size{65, 18}, Size{90, 7}, Size{450, 4},
                              Size{550, 3}, Size{735, 4}, Size{2000, 2}}) {
          for (const uint32_t mode : {0u, 1u}) {
            const Bytes src = random_bytes(from.width * from.height * pixel.bytes(), kind, kind);
            ++kind;
            expect_conversion(
                describe(level + " resize", from, mode, 0) + " to " + std::to_string(to.width), src,
                to.width * to.height * pixel.bytes(),
                [&](uint8_t* dst, const uint8_t* s) {
                  resize(kernels, dst, s,
                         {static_cast<uint32_t>(to.width), static_cast<uint32_t>(to.height)},
                         {static_cast<uint32_t>(from.width), static_cast<uint32_t>(from.height)},
                         pixel, static_cast<Resampling>(mode));
                  return 0u;
                },
                [&](uint8_t* dst) { reference::resize(dst, src.data(), to, from, pixel, mode); });
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  });
}

// Linear halving of an even width is the rounded mean of pairs.
TEST(DirectResample, HalvesByMeans) {
  const Bytes src = random_bytes(256, 3);
  Bytes dst(128), expected(128);
  for (size_t i = 0; i < 128; ++i) {
    expected[i] = static_cast<uint8_t>((src[2 * i] + src[2 * i + 1] + 1) >> 1);
  }
  EXPECT_EQ(LumResize(dst.data(), src.data(), 128, 1, 256, 1, 1, 1, 1), 0u);
  EXPECT_EQ(dst, expected);
}

struct ResizeArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t size[4];
  uint32_t channels, bytes, mode;
};
TEST(DirectResample, RefusesInOrder) {
  using A = ResizeArgs;
  const Bytes src(64, 1);
  Bytes dst(64, 0xEE);
  const Refusal<A> no_dst = {"no destination", [](A&a) { a.dst = nullptr; }, bad_argument(1)},
                   no_src = {"no source", [](A&a) { a.src = nullptr; }, bad_argument(2)},
                   mode = {"mode", [](A&a) { a.mode = 2; }, kNotImplemented};
  expect_refusals<A>({dst.data(), src.data(), {4, 4, 3, 3}, 1, 1, 1},
                     {no_dst,
                      no_src,
                      {"no width", [](A& a) { a.size[0] = 0; }, bad_argument(3)},
                      {"width", [](A& a) { a.size[0] = 65536; }, bad_argument(3)},
                      {"no height", [](A& a) { a.size[1] = 0; }, bad_argument(4)},
                      {"height", [](A& a) { a.size[1] = 65536; }, bad_argument(4)},
                      {"no source width", [](A& a) { a.size[2] = 0; }, bad_argument(5)},
                      {"source width", [](A& a) { a.size[2] = 65536; }, bad_argument(5)},
                      {"no source height", [](A& a) { a.size[3] = 0; }, bad_argument(6)},
                      {"source height", [](A& a) { a.size[3] = 65536; }, bad_argument(6)},
                      {"no channels", [](A& a) { a.channels = 0; }, bad_argument(7)},
                      {"channels", [](A& a) { a.channels = 5; }, bad_argument(7)},
                      {"bytes of a sample", [](A& a) { a.bytes = 0; }, bad_argument(8)},
                      mode},
                     dst, [](const A& a) {
                       return LumResize(a.dst, a.src, a.size[0], a.size[1], a.size[2], a.size[3],
                                        a.channels, a.bytes, a.mode);
                     });
  dst.assign(64, 0xEE);
  expect_refusals<A>({dst.data(), src.data(), {4, 3, 0, 0}, 1, 1, 1},
                     {no_dst,
                      no_src,
                      {"no pixels", [](A& a) { a.size[0] = 0; }, bad_argument(3)},
                      {"no source pixels", [](A& a) { a.size[1] = 0; }, bad_argument(4)},
                      {"channels", [](A& a) { a.channels = 5; }, bad_argument(5)},
                      {"bytes of a sample", [](A& a) { a.bytes = 3; }, bad_argument(6)},
                      mode},
                     dst, [](const A& a) {
                       return LumResampleRow(a.dst, a.src, a.size[0], a.size[1], a.channels,
                                             a.bytes, 0, 0x10000, a.mode);
                     });
}

}  // namespace
}  // namespace lum::test
