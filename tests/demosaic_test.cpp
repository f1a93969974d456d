// SPDX-License-Identifier: MIT
// The four interpolating demosaic modes: known answers, the reference, and what always holds.
#include "bayer/demosaic.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "levels.h"
#include "lum/lum.h"
#include "mirrored_rows.h"
#include "reference.h"
#include "test_support.h"

namespace lum::test {
namespace {

using reference::Demosaic;

struct Mode {
  const char* name;
  Demosaic mode;
  MosaicFunction function;
  size_t reach_rows, reach_columns;
  bool paired;  // pixels are worked on in pairs of columns
  uint32_t crc_a[4], crc_b[4];
  Bytes row_a, row_b;  // row 5, columns 0 .. 3, pattern 0
};
const Mode kModes[] = {
    {"3x3",
     Demosaic::bilinear,
     LumRaw8ImageTransform_3x3,
     1,
     1,
     false,
     {0x94CE15B3, 0x2F18ECAB, 0xA50EB906, 0x3EDA3C00},
     {0xA86C332F, 0x37BE05F8, 0x82CBB403, 0x95A026AB},
     {185, 185, 86, 152, 151, 86, 118, 246, 119, 154, 153, 152},
     {106, 106, 98, 96, 95, 98, 86, 80, 85, 82, 76, 72}},
    {"IntYUV422",
     Demosaic::yuv422,
     LumRaw8ImageTransform_IntYUV422,
     2,
     3,
     true,
     {0x65D7D530, 0x4E6F542D, 0xABCCB6DA, 0xA898F8F2},
     {0xADD37A10, 0xA7109AD3, 0x9989AE4E, 0x2C1B7E07},
     {208, 185, 182, 112, 89, 86, 236, 246, 238, 150, 160, 152},
     {105, 106, 110, 93, 94, 98, 80, 80, 85, 67, 67, 72}},
    {"IntLCAA",
     Demosaic::lcaa,
     LumRaw8ImageTransform_IntLCAA,
     3,
     4,
     false,
     {0xC595C721, 0xF559C239, 0x88F36595, 0xC7C1F1AA},
     {0x9697E03D, 0x4313609D, 0x5F222230, 0xE9CC8495},
     {240, 185, 106, 162, 134, 86, 255, 246, 206, 160, 152, 152},
     {106, 106, 110, 94, 94, 98, 81, 80, 84, 67, 67, 72}},
    {"IntLCAAV",
     Demosaic::lcaav,
     LumRaw8ImageTransform_IntLCAAV,
     3,
     5,
     false,
     {0x240B89D1, 0x8FF0D1FA, 0x738568CD, 0x1E72BD39},
     {0x0CBEFAD5, 0xB864DEA2, 0xE8103053, 0xBF51228B},
     {193, 185, 193, 76, 73, 86, 248, 246, 253, 128, 136, 152},
     {106, 106, 110, 93, 93, 98, 81, 80, 84, 67, 67, 72}},
};

Bytes reference_rgb(const Mode& mode, const Bytes& src, size_t width, size_t height,
                    uint32_t pattern) {
  const reference::Frame frame = reference::demosaic(mode.mode, src.data(), static_cast<int>(width),
                                                     static_cast<int>(height), pattern);
  Bytes out(3 * src.size());
  reference::store(LUM_FORMAT_RGB24, frame.data(), frame.size(), out.data());
  return out;
}

Bytes actual_rgb(const Mode& mode, const Bytes& src, size_t width, size_t height,
                 uint32_t pattern) {
  Bytes out(3 * src.size());
  EXPECT_EQ(mode.function(out.data(), src.data(), static_cast<uint32_t>(width),
                          static_cast<uint32_t>(height), LUM_FORMAT_RGB24, pattern),
            0u)
      << mode.name;
  return out;
}

void expect_known_answers(Bytes (*convert)(const Mode&, const Bytes&, size_t, size_t, uint32_t)) {
  const Bytes a = frame_a(), b = frame_b();
  for (const Mode& mode : kModes) {
    for (uint32_t pattern = 0; pattern < 4; ++pattern) {
      const Bytes out_a = convert(mode, a, 16, 12, pattern);
      const Bytes out_b = convert(mode, b, 16, 12, pattern);
      EXPECT_EQ(reference::crc32(out_a.data(), out_a.size()), mode.crc_a[pattern])
          << mode.name << " frame A pattern " << pattern;
      EXPECT_EQ(reference::crc32(out_b.data(), out_b.size()), mode.crc_b[pattern])
          << mode.name << " frame B pattern " << pattern;
      if (pattern != 0) continue;
      EXPECT_EQ(Bytes(&out_a[5 * 48], &out_a[5 * 48] + 12), mode.row_a) << mode.name;
      EXPECT_EQ(Bytes(&out_b[5 * 48], &out_b[5 * 48] + 12), mode.row_b) << mode.name;
    }
  }
}

TEST(Reference, DemosaicKnownAnswers) {
  const Bytes a = frame_a(), b = frame_b();
  EXPECT_EQ(reference::crc32(a.data(), a.size()), 0x5C14457Cu);
  EXPECT_EQ(reference::crc32(b.data(), b.size()), 0xE3CA0468u);
  expect_known_answers(reference_rgb);
}

TEST(Demosaic, KnownAnswers) { expect_known_answers(actual_rgb); }

// Of all demosaics, with rows left over in either direction.
const Size kTilesBelowTiles = {1284, kTileRows + 4};

// Every level through the frame loop beneath the entry points.
TEST(Demosaic, EveryLevelWritesWhatTheReferenceWrites) {
  // Widths about the multiples of the tiles and of the strips that the work is cut into.
  const Size sizes[] = {{2, 2},    {2, 4},    {4, 2},    {4, 4},    {6, 6},
                        {8, 8},    {18, 2},   {2, 18},   {66, 10},  {130, 6},
                        {254, 4},  {256, 10}, {258, 8},  {262, 4},  {272, 4},
                        {42, 6},   {64, 8},   {522, 12}, {640, 6},  {646, 6},
                        {1282, 6}, {4098, 4}, {4100, 6}, {8198, 4}, kTilesBelowTiles};
  static const DemosaicMode kInternal[] = {DemosaicMode::bilinear, DemosaicMode::lcaa,
                                           DemosaicMode::lcaav, DemosaicMode::yuv422};
  unsigned kind = 0;
  for (const Mode& mode : kModes) {
    for (const Size size : sizes) {
      if (size.width > 4000 && (mode.mode == Demosaic::lcaa || mode.mode == Demosaic::lcaav))
        continue;
      const bool large = size.width * size.height > 100000;
      const unsigned repeats = size.width * size.height < 400 && !quick() ? kFillKinds : 1;
      for (const uint32_t pattern : kPatterns) {
        if (large && pattern != kPatterns[0]) continue;
        for (unsigned repeat = 0; repeat < repeats; ++repeat, ++kind) {
          const Bytes src = random_bytes(size.width * size.height, kind, large ? 0 : kind);
          const reference::Frame frame =
              reference::demosaic(mode.mode, src.data(), static_cast<int>(size.width),
                                  static_cast<int>(size.height), pattern);
          for (uint32_t format = 0; format <= 6; ++format) {
            if ((size.width > 4000 || large) && format != LUM_FORMAT_BGR24) continue;
            for (const TestedLevel& level : tested_levels()) {
              if (level.kernels == nullptr) continue;
              expect_conversion(
                  describe(mode.name, size, format, pattern) + " level " + level.name, src,
                  src.size() * reference::pixel_bytes(format),
                  [&](uint8_t* dst, const uint8_t* s) {
                    convert_demosaic(*level.kernels,
                                     {dst, s, static_cast<uint32_t>(size.width),
                                      static_cast<uint32_t>(size.height), red_phase(pattern),
                                      static_cast<Sink>(format)},
                                     kInternal[static_cast<size_t>(mode.mode)]);
                    return 0u;
                  },
                  [&](uint8_t* dst) { reference::store(format, frame.data(), frame.size(), dst); });
              if (HasFatalFailure()) return;
            }
          }
        }
      }
    }
  }
}

// The entry points: every format, the all-ones pattern.
TEST(Demosaic, EntriesWriteWhatTheReferenceWrites) {
  const Size size = {70, 8};
  const Bytes src = random_bytes(size.width * size.height, 7);
  for (const Mode& mode : kModes) {
    for (const uint32_t pattern : kPatterns) {
      const reference::Frame frame = reference::demosaic(mode.mode, src.data(), 70, 8, pattern);
      for (uint32_t format = 0; format <= 6; ++format) {
        expect_mosaic(mode.name, mode.function, size, format, pattern, src, [&](uint8_t* dst) {
          reference::store(format, frame.data(), frame.size(), dst);
        });
      }
    }
  }
}

char colour_at(uint32_t pattern, size_t x, size_t y) {
  static const char* const kCells[4] = {"RGGB", "GBRG", "GRBG", "BGGR"};
  return kCells[pattern & 3][y % 2 * 2 + x % 2];
}

TEST(Demosaic, FlatColoursStayWhatTheyAre) {
  const size_t w = 20, h = 14;
  for (const Mode& mode : kModes) {
    for (const uint32_t pattern : kPatterns) {
      for (const Bytes& rgb : {Bytes{200, 10, 90}, Bytes{0, 255, 0}, Bytes{255, 0, 255}}) {
        Bytes src, expected;
        for (size_t i = 0; i < w * h; ++i) {
          const char c = colour_at(pattern, i % w, i / w);
          src.push_back(rgb[c == 'R' ? 0 : c == 'G' ? 1 : 2]);
          expected.insert(expected.end(), rgb.begin(), rgb.end());
        }
        EXPECT_EQ(actual_rgb(mode, src, w, h, pattern), expected) << mode.name;
      }
    }
  }
}

TEST(Demosaic, PassesTheOwnComponentThrough) {
  const size_t w = 34, h = 10;
  const Bytes src = random_bytes(w * h, 3);
  for (const Mode& mode : kModes) {
    for (const uint32_t pattern : kPatterns) {
      const Bytes out = actual_rgb(mode, src, w, h, pattern);
      for (size_t i = 0; i < w * h; ++i) {
        const char c = colour_at(pattern, i % w, i / w);
        ASSERT_EQ(out[3 * i + (c == 'R' ? 0 : c == 'G' ? 1 : 2)], src[i]) << mode.name << ' ' << i;
      }
    }
  }
}

// Pixels of `bytes` bytes in an image turned left-right or upside down.
Bytes mirrored(const Bytes& image, size_t width, size_t bytes, bool columns) {
  const size_t height = image.size() / width / bytes;
  Bytes out;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const size_t from = (columns ? y : height - 1 - y) * width + (columns ? width - 1 - x : x);
      out.insert(out.end(), &image[from * bytes], &image[from * bytes] + bytes);
    }
  }
  return out;
}

TEST(Demosaic, MirroredFramesGiveMirroredPictures) {
  const size_t w = 38, h = 14;
  const Bytes src = random_bytes(w * h, 4);
  for (const Mode& mode : kModes) {
    for (uint32_t pattern = 0; pattern < 4; ++pattern) {
      for (const bool columns : {false, true}) {
        const uint32_t exchanged = pattern ^ (columns ? 2 : 1);
        EXPECT_EQ(actual_rgb(mode, mirrored(src, w, 1, columns), w, h, exchanged),
                  mirrored(actual_rgb(mode, src, w, h, pattern), w, 3, columns))
            << mode.name << " pattern " << pattern << (columns ? " columns" : " rows");
      }
    }
  }
}

// One row off the top and one off the bottom (or columns): the pattern's phase moves on, and what
// is farther from the border than the reach does not change.
TEST(Demosaic, CroppedFramesGiveTheSamePicture) {
  const size_t w = 40, h = 20;
  const Bytes src = random_bytes(w * h, 5);
  for (const Mode& mode : kModes) {
    for (uint32_t pattern = 0; pattern < 4; ++pattern) {
      const Bytes whole = actual_rgb(mode, src, w, h, pattern);
      for (const bool columns : {false, true}) {
        if (columns && mode.paired) continue;
        const size_t left = columns ? 1 : 0, top = columns ? 0 : 1;
        const size_t cw = w - 2 * left, ch = h - 2 * top;
        Bytes cropped;
        for (size_t y = 0; y < ch; ++y) {
          const uint8_t* row = &src[(y + top) * w + left];
          cropped.insert(cropped.end(), row, row + cw);
        }
        const Bytes out = actual_rgb(mode, cropped, cw, ch, pattern ^ (columns ? 2 : 1));
        for (size_t y = mode.reach_rows; y < ch - mode.reach_rows; ++y) {
          for (size_t x = mode.reach_columns; x < cw - mode.reach_columns; ++x) {
            for (size_t c = 0; c < 3; ++c) {
              ASSERT_EQ(out[3 * (y * cw + x) + c], whole[3 * ((y + top) * w + x + left) + c])
                  << mode.name << " pattern " << pattern << " at " << x << ',' << y;
            }
          }
        }
      }
    }
  }
}

// Near 2^32 columns a sum of a column and a tile's width wraps. Tiles of a narrow frame are as high
// as it is.
TEST(Demosaic, TilesCoverTheFrame) {
  for (const uint32_t columns : {640u, 4096u}) {
    for (const uint32_t width : {1u, columns - 1, columns, columns + 1, 0u - 2 * columns,
                                 0u - columns, 1u - columns, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
      for (const uint32_t height : {1u, kTileRows, 2 * kTileRows + 1}) {
        if (width > 0xFFFFu && height > 1) continue;  // millions of tiles each
        SCOPED_TRACE(testing::Message() << width << 'x' << height << ", tiles of " << columns);
        uint64_t x = 0, y = 0;
        each_tile(width, height, columns, [&](const Tile& tile) {
          if (tile.x != x || tile.columns == 0 || tile.columns > columns || tile.begin != y ||
              tile.end <= y || (width > columns && tile.end - y > kTileRows)) {
            throw std::logic_error("a tile is out of place");
          }
          x += tile.columns;
          if (x == width) {
            x = 0;
            y = tile.end;
          }
        });
        EXPECT_EQ(x, 0u);
        EXPECT_EQ(y, height);
      }
    }
  }
}

TEST(Demosaic, RefusesInOrderAndWritesNothing) {
  using A = MosaicArgs;
  std::vector<Refusal<A>> refusals = mosaic_refusals();
  refusals.push_back({"pattern 4", [](A& a) { a.pattern = 4; }, bad_argument(5)});
  refusals.push_back(bad_format<7, A>());
  for (const Mode& mode : kModes) expect_mosaic_refusals(mode.function, refusals);
}

}  // namespace
}  // namespace lum::test
