// SPDX-License-Identifier: MIT
#include "bayer/demosaic.h"

#include <string.h>

#include <algorithm>

#include "arguments.h"
#include "lum/lum.h"
#include "mirrored_rows.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {
namespace {

template <class Int>
constexpr Int round_up(Int n, Int step) {
  return (n + step - 1) / step * step;
}

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

// What the pixels of a row are made of, in a strip of a frame: its samples and what is needed of
// `kReach` rows above and below, which place() tells. prepare() is called for each of the rows
// once, in order, when its samples are there and before any row within its reach is written.
using StripSamples = MirroredStrip<8, 4>;
struct BilinearRows {
  static constexpr Source kSource = Source::bilinear;
  static constexpr int kReach = 1;
  explicit BilinearRows(uint32_t width) : samples(width) {}
  void prepare(const Kernels&, int64_t, uint32_t, size_t) {}
  void place(int64_t y, RowArgs& args) const {
    args.above = samples[y - 1] - samples[y];
    args.below = samples[y + 1] - samples[y];
  }

  StripSamples samples;
};

// A row adds the same to the rows above and below it, and the same to those two away, so that its
// samples are weighed once. The sums of narrow frames lie close together, as caches hold them best.
class PairedChromaRows {
 public:
  static constexpr Source kSource = Source::paired_chroma;
  static constexpr int kReach = 2;
  explicit PairedChromaRows(uint32_t width)
      : samples(width),
        pitch_(kPaddedBytes + round_up<size_t>(std::min(width, kColumns), kPaddedBytes)) {
    memset(sums_, 0, kRows * pitch_);
  }
  void prepare(const Kernels& kernels, int64_t y, uint32_t native, size_t n) {
    kernels.demosaic.pair_sums(samples[y], native, {beside(y), beyond(y), pitch()},
                               round_up(n, kPaddedBytes));
  }
  void place(int64_t y, RowArgs& args) {
    const uint8_t* const here = samples[y];
    args.above = distance(here, beside(y - 1));
    args.below = distance(here, beside(y + 1));
    args.above2 = distance(here, beyond(y - 2));
    args.below2 = distance(here, beyond(y + 2));
    args.pitch = pitch();
  }

  StripSamples samples;

 private:
  static constexpr uint32_t kColumns = StripSamples::kColumns;
  // As many rows as are needed when the last one is prepared, with the sums of its neighbours.
  static constexpr int64_t kBeyondRows = 2 * kReach + 1, kBesideRows = kReach + 2;
  static constexpr size_t kRows = 2 * (kBeyondRows + kBesideRows);

  ptrdiff_t pitch() const { return static_cast<ptrdiff_t>(pitch_); }
  uint8_t* sums(int64_t row) { return sums_ + 2 * pitch_ * static_cast<size_t>(row); }
  uint8_t* beyond(int64_t y) { return sums((y + kBeyondRows) % kBeyondRows); }
  uint8_t* beside(int64_t y) { return sums(kBeyondRows + (y + kBesideRows) % kBesideRows); }

  const size_t pitch_;
  alignas(64) uint8_t sums_[kRows * (kColumns + kPaddedBytes)];
};

// The two demosaics that go from samples to pixels in one step, strip by strip.
template <class Rows>
void convert_in_strips(const Kernels& kernels, const MosaicFrame& f) {
  // Rows are fetched long before they are read: a load of what has just been stored in pieces, at
  // the sides of a row, would wait.
  constexpr int kReach = Rows::kReach, kAhead = 4;
  constexpr uint32_t kColumns = StripSamples::kColumns;
  Rows rows(f.width);
  const size_t pixels = size_t{f.width} * f.height;
  const RowWriter write(kernels, Rows::kSource, f.sink, pixels, pixels);

  for (uint32_t x = 0; x < f.width; x += kColumns) {
    const uint32_t n = std::min(kColumns, f.width - x);
    const auto fetch = [&](int64_t y, const uint8_t* row) {
      rows.samples.fetch(y, row, f.width, x, n);
    };
    const auto prepare = [&](int64_t y) {
      rows.prepare(kernels, y, native_column(f, static_cast<uint32_t>(y)), n);
    };
    for (int64_t y = -kReach; y < kAhead; ++y) fetch(y, source_row(f, y));
    for (int64_t y = -kReach; y < kReach; ++y) prepare(y);
    RowArgs args;
    const uint8_t* ahead = source_row(f, kAhead);
    for (uint32_t row = 0; row < f.height; ++row) {
      const int64_t y = row;
      fetch(y + kAhead, ahead);
      ahead = source_row(f, y + kAhead + 1);
      prepare(y + kReach);
      rows.place(y, args);
      args.column = native_column(f, row);
      args.own_is_blue = is_red_row(f, row) ? 0 : 1;
      args.ahead_of_a = distance(rows.samples[y], ahead + x);
      write(destination(f, x, row), rows.samples[y], nullptr, n, args);
    }
  }
}

// A tile's columns; most frames are one or a few tiles wide, and its rows of words stay in the
// second-level cache.
constexpr int kTile = 1024;
constexpr int kBeside = 8;  // samples that are needed on either side of a tile
static_assert(kBeside <= kTileMargin, "the margin holds them");
constexpr int kMostStep = 32;  // words, of the widest level
// Words of a half, from the margin on. Where whole vectors end with the frame, nothing is needed
// beside them.
constexpr int tile_words(int margin, int columns, int step) {
  const bool ends_with_frame = margin == 0 && columns % (2 * step) == 0;
  return round_up((margin + columns + (ends_with_frame ? 0 : kBeside) + 1) / 2, step);
}
static_assert(tile_words(kTileMargin, kTile, kMostStep) <= kMostTileWords, "room for a tile");
constexpr int kRowWords = 3 * kTileSlack + 2 * kMostTileWords;
constexpr ptrdiff_t kPlanePitch = 2 * kMostTileWords + 64;

// Its first words are slack.
using WordRow = int16_t[kRowWords];

// The last rows of something, by row number: N of them or fewer, powers of two. Fewer stay in the
// first-level cache.
template <int N>
struct Ring {
  alignas(64) WordRow rows[N];
  int64_t used = N;
  int16_t* operator[](int64_t y) { return rows[y & (used - 1)] + kTileSlack; }
};

// A frame that is one tile needs no columns beside it but mirrored ones.
int tile_margin(const MosaicFrame& f) { return f.width <= kTile ? 0 : kTileMargin; }

using TileSamples = MirroredStrip<8, kBeside, kTile, kTileMargin>;
struct TileRows {
  Ring<8> qh, ah3;
  Ring<4> pv, av3;
  alignas(64) WordRow qv, e, act, work[5];
  alignas(64) uint8_t planes[3 * kPlanePitch];
};

void convert_tile(const Kernels& kernels, const MosaicFrame& f, DemosaicMode mode, uint32_t x,
                  TileSamples& z, TileRows& rows) {
  const DemosaicKernels& k = kernels.demosaic;
  const bool edge_aware = mode == DemosaicMode::lcaav;
  const auto step = edge_aware ? k.lcaav : k.lcaa;
  const auto direction = edge_aware ? k.direction_and_activity : k.direction;
  // How far below the row that is written the differences along a row must be known, and how far
  // samples are fetched: as in convert_in_strips(), before they are needed.
  const int reach = edge_aware ? 3 : 1;
  constexpr int kAhead = 5;
  const size_t pixels = size_t{f.width} * f.height;
  const RowWriter write(kernels, Source::planes8, f.sink, pixels, pixels);
  const uint32_t n = std::min<uint32_t>(kTile, f.width - x);
  // What the vectors compute beyond the samples beside the tile reaches no pixel that is written.
  const int margin = tile_margin(f);
  const size_t words = static_cast<size_t>(tile_words(margin, static_cast<int>(n), k.step));

  const auto samples = [&](int64_t y) { return z[y] - margin; };
  const auto fetch = [&](int64_t y) { z.fetch(y, source_row(f, y), f.width, x, n); };
  const auto add_row = [&](int64_t y) { k.along_row(samples(y), rows.qh[y], rows.ah3[y], words); };
  const auto add_columns = [&](int64_t y) {
    const uint8_t* const five[5] = {samples(y - 2), samples(y - 1), samples(y), samples(y + 1),
                                    samples(y + 2)};
    k.down_column(five, rows.pv[y], rows.av3[y], words);
  };

  rows.qh.used = rows.ah3.used = edge_aware ? 8 : 4;
  for (int64_t y = -3; y < kAhead; ++y) fetch(y);
  for (int64_t y = -reach; y <= reach; ++y) add_row(y);
  add_columns(-1);
  add_columns(0);
  DemosaicTile t = {};
  t.qv = rows.qv + kTileSlack;
  t.e = rows.e + kTileSlack;
  t.act = rows.act + kTileSlack;
  for (int i = 0; i < 5; ++i) t.work[i] = rows.work[i] + kTileSlack;
  for (int i = 0; i < 3; ++i) t.planes[i] = rows.planes + i * kPlanePitch;
  t.words = words;

  for (int64_t y = 0; y < f.height; ++y) {
    fetch(y + kAhead);
    add_columns(y + 1);
    const int16_t* const pv[3] = {rows.pv[y - 1], rows.pv[y], rows.pv[y + 1]};
    const int16_t* const ah3[3] = {rows.ah3[y - 1], rows.ah3[y], rows.ah3[y + 1]};
    const int16_t* const av3[3] = {rows.av3[y - 1], rows.av3[y], rows.av3[y + 1]};
    direction(pv, ah3, av3, rows.qv + kTileSlack, rows.e + kTileSlack, rows.act + kTileSlack,
              words);
    add_row(y + reach + 1);  // here, so that the direction is stored when its neighbours are read
    for (int i = 0; i < 7; ++i) {
      t.z[i] = samples(y + i - 3);
      t.qh[i] = rows.qh[y + i - 3];
    }
    t.native = native_column(f, static_cast<uint32_t>(y));
    step(t);

    // The own colour is red or blue: the planes are read forwards or backwards.
    RowArgs args;
    const bool red = is_red_row(f, static_cast<uint32_t>(y));
    args.pitch = red ? kPlanePitch : -kPlanePitch;
    const uint8_t* const planes = (red ? t.planes[0] : t.planes[2]) + margin;
    // Tiles walk down: what comes next is on other pages, where no hardware prefetches it.
    args.ahead_of_a = distance(planes, source_row(f, y + kAhead + 1) + x);
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
      convert_in_strips<BilinearRows>(kernels, frame);
      return;
    case DemosaicMode::yuv422:
      convert_in_strips<PairedChromaRows>(kernels, frame);
      return;
    case DemosaicMode::lcaa:
    case DemosaicMode::lcaav:
      break;
  }
  TileSamples z(frame.width, tile_margin(frame));
  TileRows rows = {};
  for (uint32_t x = 0; x < frame.width; x += kTile) convert_tile(kernels, frame, mode, x, z, rows);
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
