// SPDX-License-Identifier: MIT
#include "bayer/demosaic.h"

#include <algorithm>

#include "arguments.h"
#include "lum/lum.h"
#include "mirrored_rows.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {
namespace {

const uint8_t* source_row(const MosaicFrame& f, int64_t y) {
  return f.src + static_cast<size_t>(mirrored(y, f.height)) * f.width;
}
uint8_t* destination(const MosaicFrame& f, uint32_t x, uint32_t y) {
  return f.dst + (size_t{y} * f.width + x) * pixel_bytes(f.sink);
}

// Row y holds red and green, or blue and green; its own colour is at columns of this parity.
bool is_red_row(const MosaicFrame& f, uint32_t y) { return ((y + f.red.row) & 1) == 0; }
uint32_t native_column(const MosaicFrame& f, uint32_t y) {
  return (f.red.column + f.red.row + y) & 1;
}

// The two demosaics that go from samples to pixels in one step need up to two rows above and below
// and three samples more on either side.
void convert_in_one_step(const Kernels& kernels, const MosaicFrame& f, Source source) {
  // Rows are fetched long before they are read: a load of what has just been stored in pieces, at
  // the sides of a row, would wait.
  constexpr int kReach = 2, kAhead = 4;
  using Strip = MirroredStrip<8, 4>;
  Strip rows;
  const size_t pixels = size_t{f.width} * f.height;
  const RowWriter write(kernels, source, f.sink, pixels, pixels);

  for (uint32_t x = 0; x < f.width; x += Strip::kColumns) {
    const uint32_t n = std::min(Strip::kColumns, f.width - x);
    const auto fetch = [&](int64_t y) { rows.fetch(y, source_row(f, y), f.width, x, n); };
    for (int64_t y = -kReach; y < kAhead; ++y) fetch(y);
    for (uint32_t row = 0; row < f.height; ++row) {
      const int64_t y = row;
      fetch(y + kAhead);
      const uint8_t* const here = rows[y];
      RowArgs args;
      args.column = native_column(f, row);
      args.above = rows[y - 1] - here;
      args.below = rows[y + 1] - here;
      args.above2 = rows[y - 2] - here;
      args.below2 = rows[y + 2] - here;
      args.own_is_blue = is_red_row(f, row) ? 0 : 1;
      args.ahead_of_a = distance(here, source_row(f, y + kAhead + 1) + x);
      write(destination(f, x, row), here, nullptr, n, args);
    }
  }
}

// A tile's columns; most frames are one or a few tiles wide, and its rows of words stay in the
// second-level cache.
constexpr int kTile = 1024;
constexpr int kBeside = 8;  // samples that are needed on either side of a tile
static_assert(kBeside <= kTileMargin, "the margin holds them");
constexpr int kMostStep = 32;  // words, of the widest level
constexpr int round_up(int n, int step) { return (n + step - 1) / step * step; }
constexpr int kRowWords =
    kTileSlack + round_up(kTileMargin + kTile + kBeside, kMostStep) + 2 * kTileSlack;
constexpr ptrdiff_t kPlanePitch = round_up(kTile, 64) + 64;

using WordRow = int16_t[kRowWords];

// The last N rows of something, by row number; N is a power of two.
template <int N>
struct Ring {
  alignas(64) WordRow rows[N];
  int16_t* operator[](int64_t y) { return rows[y & (N - 1)] + kTileSlack; }
};

struct TileRows {
  Ring<8> z, qh, ah3, av3;
  Ring<4> pv;
  alignas(64) WordRow qv, e, act, scratch, work[5];
  alignas(64) uint8_t planes[3 * kPlanePitch];
};

// How far below the row that is written a mode's rows must be known.
constexpr int kReach = 3;

void convert_tile(const Kernels& kernels, const MosaicFrame& f, DemosaicMode mode, uint32_t x,
                  TileRows& rows) {
  const DemosaicKernels& k = kernels.demosaic;
  const auto step = mode == DemosaicMode::lcaa ? k.lcaa : k.lcaav;
  const RowKernel write = kernels.at(Source::planes8, f.sink);
  const uint32_t n = std::min<uint32_t>(kTile, f.width - x);
  // What the vectors compute beyond the samples beside the tile reaches no pixel that is written.
  const int first = kTileMargin - round_up(kBeside, k.step);
  const size_t words = round_up(kTileMargin + static_cast<int>(n) + kBeside - first, k.step);
  const auto from = [first](int16_t* row) { return row + first; };

  const auto add_samples = [&](int64_t y) {
    const uint8_t* const row = source_row(f, y);
    int16_t* const z = rows.z[y];
    // Only at the frame's sides is there less than a whole margin to read.
    const uint32_t before = std::min<uint32_t>(kBeside, x);
    const uint32_t behind = std::min<uint32_t>(kBeside, f.width - x - n);
    for (int64_t i = -kBeside; i < -int64_t{before}; ++i) {
      z[kTileMargin + i] = row[mirrored(x + i, f.width)];
    }
    k.widen(z + kTileMargin - before, row + x - before, before + n + behind);
    for (int64_t i = n + behind; i < n + kBeside; ++i) {
      z[kTileMargin + i] = row[mirrored(x + i, f.width)];
    }
    k.along_row(from(z), from(rows.qh[y]), from(rows.ah3[y]), from(rows.scratch + kTileSlack),
                words);
  };
  const auto add_columns = [&](int64_t y) {
    const int16_t* const z[5] = {from(rows.z[y - 2]), from(rows.z[y - 1]), from(rows.z[y]),
                                 from(rows.z[y + 1]), from(rows.z[y + 2])};
    k.down_column(z, from(rows.pv[y]), from(rows.av3[y]), from(rows.scratch + kTileSlack), words);
  };

  for (int64_t y = -kReach; y < kReach; ++y) add_samples(y);
  add_columns(-1);
  add_columns(0);
  DemosaicTile t = {};
  t.qv = rows.qv + kTileSlack;
  t.e = rows.e + kTileSlack;
  t.act = rows.act + kTileSlack;
  for (int i = 0; i < 5; ++i) t.work[i] = rows.work[i] + kTileSlack;
  for (int i = 0; i < 3; ++i) t.planes[i] = rows.planes + i * kPlanePitch;
  t.first = static_cast<size_t>(first);
  t.columns = n;

  for (int64_t y = 0; y < f.height; ++y) {
    add_samples(y + kReach);
    add_columns(y + 1);
    const int16_t* const pv[3] = {from(rows.pv[y - 1]), from(rows.pv[y]), from(rows.pv[y + 1])};
    const int16_t* const ah3[3] = {from(rows.ah3[y - 1]), from(rows.ah3[y]), from(rows.ah3[y + 1])};
    const int16_t* const av3[3] = {from(rows.av3[y - 1]), from(rows.av3[y]), from(rows.av3[y + 1])};
    k.direction(pv, ah3, av3, from(rows.qv + kTileSlack), from(rows.e + kTileSlack),
                from(rows.act + kTileSlack), words);
    for (int i = 0; i < 7; ++i) {
      t.z[i] = rows.z[y + i - 3];
      t.qh[i] = rows.qh[y + i - 3];
    }
    t.native = native_column(f, static_cast<uint32_t>(y));
    step(t);

    // The own colour is red or blue: the planes are read forwards or backwards.
    RowArgs args;
    const bool red = is_red_row(f, static_cast<uint32_t>(y));
    args.pitch = red ? kPlanePitch : -kPlanePitch;
    const uint8_t* const planes = red ? t.planes[0] : t.planes[2];
    // Tiles walk down: what comes next is on other pages, where no hardware prefetches it.
    args.ahead_of_a = distance(planes, source_row(f, y + kReach + 2) + x);
    args.write_ahead = static_cast<ptrdiff_t>(f.width * pixel_bytes(f.sink));
    write(destination(f, x, static_cast<uint32_t>(y)), planes, nullptr, n, args);
  }
}

uint32_t demosaic(DemosaicMode mode, uint8_t* dst, const uint8_t* src, uint32_t width,
                  uint32_t height, uint32_t format, uint32_t pattern) {
  if (const uint32_t error = check_mosaic(dst, src, width, height, pattern)) return error;
  if (format > LUM_FORMAT_UYVY) return kNotImplemented;
  convert_demosaic(kernels(),
                   {dst, src, width, height, red_phase(pattern), static_cast<Sink>(format)}, mode);
  return kSuccess;
}

}  // namespace

void convert_demosaic(const Kernels& kernels, const MosaicFrame& frame, DemosaicMode mode) {
  switch (mode) {
    case DemosaicMode::bilinear:
      convert_in_one_step(kernels, frame, Source::bilinear);
      return;
    case DemosaicMode::yuv422:
      convert_in_one_step(kernels, frame, Source::paired_chroma);
      return;
    case DemosaicMode::lcaa:
    case DemosaicMode::lcaav:
      break;
  }
  TileRows rows = {};
  for (uint32_t x = 0; x < frame.width; x += kTile) convert_tile(kernels, frame, mode, x, rows);
}

}  // namespace lum

using namespace lum;

uint32_t LumRaw8ImageTransform_3x3(uint8_t* dst, const uint8_t* src, uint32_t width,
                                   uint32_t height, uint32_t formatIndex, uint32_t bayerPattern) {
  return demosaic(DemosaicMode::bilinear, dst, src, width, height, formatIndex, bayerPattern);
}

uint32_t LumRaw8ImageTransform_IntLCAA(uint8_t* dst, const uint8_t* src, uint32_t width,
                                       uint32_t height, uint32_t formatIndex,
                                       uint32_t bayerPattern) {
  return demosaic(DemosaicMode::lcaa, dst, src, width, height, formatIndex, bayerPattern);
}

uint32_t LumRaw8ImageTransform_IntLCAAV(uint8_t* dst, const uint8_t* src, uint32_t width,
                                        uint32_t height, uint32_t formatIndex,
                                        uint32_t bayerPattern) {
  return demosaic(DemosaicMode::lcaav, dst, src, width, height, formatIndex, bayerPattern);
}

uint32_t LumRaw8ImageTransform_IntYUV422(uint8_t* dst, const uint8_t* src, uint32_t width,
                                         uint32_t height, uint32_t formatIndex,
                                         uint32_t bayerPattern) {
  return demosaic(DemosaicMode::yuv422, dst, src, width, height, formatIndex, bayerPattern);
}
