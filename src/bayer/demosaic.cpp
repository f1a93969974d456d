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
  return mirrored_row(f.src, f.width, f.height, y);
}

// Row y holds red and green, or blue and green; its own colour is at columns of this parity.
bool is_red_row(const MosaicFrame& f, uint32_t y) { return ((y + f.red.row) & 1) == 0; }
uint32_t native_column(const MosaicFrame& f, uint32_t y) {
  return (f.red.column + f.red.row + y) & 1;
}

// From the frame's rows as they lie.
void convert_bilinear(const Kernels& kernels, const MosaicFrame& f) {
  const size_t pixels = size_t{f.width} * f.height;
  RowWriter write(kernels, Source::bilinear, f.sink, pixels, pixels);
  const ptrdiff_t pitch = f.width;
  const uint8_t* src = f.src;
  uint8_t* dst = f.dst;
  RowArgs args;
  args.ahead_of_a = pitch + kPrefetchDistance;
  for (uint32_t y = 0; y < f.height; ++y) {
    args.above = y == 0 ? pitch : -pitch;
    args.below = y == f.height - 1 ? -pitch : pitch;
    args.column = native_column(f, y);
    args.own_is_blue = is_red_row(f, y) ? 0 : 1;
    write(dst, src, nullptr, f.width, args);
    src += f.width;
    dst += f.width * pixel_bytes(f.sink);
  }
}

// What the pixels of a row are made of, in a tile of a frame: its samples and sums of kReach rows
// above and below, which place() tells. A row adds the same to the rows above and below it, and the
// same to those two away, so that its samples are weighed once: by prepare(), for each row in
// order, when its samples are there and before any row within its reach is written. The sums of
// narrow frames lie close together, as caches hold them best.
class PairedChromaRows {
 public:
  using Samples = MirroredStrip<8, 2, 1280>;
  static constexpr uint32_t kColumns = Samples::kColumns;
  static constexpr int kReach = 2;
  explicit PairedChromaRows(uint32_t width)
      : samples(width),
        pitch_(kPaddedBytes + round_up<size_t>(std::min(width, kColumns), kPaddedBytes)) {
    memset(sums_, 0, kRows * pitch_);
    uint8_t* sums = sums_;
    for (int i = 0; i < kBeyondRows; ++i, sums += 2 * pitch_) beyond_[i] = sums;
    for (int i = 0; i < kBesideRows; ++i, sums += 2 * pitch_) beside_.place(i, sums);
  }
  void prepare(const Kernels& kernels, int64_t y, uint32_t native, size_t n) {
    newest_ = oldest();
    kernels.demosaic.pair_sums(samples[y], native, {beside_[y], beyond_[newest_], pitch()},
                               round_up(n, kPaddedBytes));
  }
  void place(int64_t y, RowArgs& args) const {
    const uint8_t* const here = samples[y];
    args.above = distance(here, beside_[y - 1]);
    args.below = distance(here, beside_[y + 1]);
    args.above2 = distance(here, beyond_[oldest()]);
    args.below2 = distance(here, beyond_[newest_]);
    args.pitch = pitch();
  }

  Samples samples;

 private:
  // As many rows as are needed when the last one is prepared, with the sums of its neighbours.
  static constexpr int kBeyondRows = 2 * kReach + 1, kBesideRows = kReach + 2;
  static constexpr size_t kRows = 2 * (kBeyondRows + kBesideRows);

  ptrdiff_t pitch() const { return static_cast<ptrdiff_t>(pitch_); }
  int oldest() const { return newest_ == kBeyondRows - 1 ? 0 : newest_ + 1; }

  const size_t pitch_;
  RowRing<uint8_t, kBesideRows> beside_;
  // No ring, which would have room for eight: behind the newest row comes the oldest.
  uint8_t* beyond_[kBeyondRows];
  int newest_ = 0;
  alignas(64) uint8_t sums_[kRows * (kColumns + kPaddedBytes)];
};

void convert_paired_chroma(const Kernels& kernels, const MosaicFrame& f) {
  constexpr int kReach = PairedChromaRows::kReach, kAhead = 4;
  static_assert(kAhead + 1 <= PairedChromaRows::Samples::kRows, "rows y .. y + kAhead");
  PairedChromaRows rows(f.width);
  const size_t pixels = size_t{f.width} * f.height;
  RowWriter write(kernels, Source::paired_chroma, f.sink, pixels, pixels);

  each_tile(f.width, f.height, PairedChromaRows::kColumns, [&](const Tile& tile) {
    rows.samples.begin(tile.x, tile.columns);
    const auto prepare = [&](int64_t y) {
      rows.prepare(kernels, y, native_column(f, static_cast<uint32_t>(y)), tile.columns);
    };
    const int64_t first = tile.begin;
    for (int64_t y = first - kReach; y < first + kAhead; ++y)
      rows.samples.fetch(y, source_row(f, y));
    for (int64_t y = first - kReach; y < first + kReach; ++y) prepare(y);
    const size_t dst_pitch = size_t{f.width} * pixel_bytes(f.sink);
    RowArgs args;
    if (tile.columns < f.width) args.write_ahead = static_cast<ptrdiff_t>(dst_pitch);
    const uint8_t* ahead = source_row(f, first + kAhead);
    uint8_t* dst = f.dst + tile.begin * dst_pitch + tile.x * pixel_bytes(f.sink);
    for (uint32_t row = tile.begin; row < tile.end; ++row, dst += dst_pitch) {
      const int64_t y = row;
      rows.samples.fetch(y + kAhead, ahead);
      ahead = source_row(f, y + kAhead + 1);
      prepare(y + kReach);
      rows.place(y, args);
      args.column = native_column(f, row);
      args.own_is_blue = is_red_row(f, row) ? 0 : 1;
      args.ahead_of_a = distance(rows.samples[y], ahead + tile.x);
      write(dst, rows.samples[y], nullptr, tile.columns, args);
    }
  });
}

// A tile's columns: so many that its rows of words, two dozen of them, stay in the first-level
// cache where that has 48 KB.
constexpr int kTile = 640;
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
class WordRows {
 public:
  WordRows(const WordRows&) = delete;
  WordRows& operator=(const WordRows&) = delete;
  explicit WordRows(int used = N) {
    for (int i = 0; i < N; ++i) ring_.place(i, words_[i & (used - 1)] + kTileSlack);
  }
  int16_t* operator[](int64_t y) const { return ring_[y]; }
  const int16_t* const* from(int64_t y) const { return ring_.from(y); }

 private:
  RowRing<int16_t, N> ring_;
  alignas(64) WordRow words_[N];
};

// A frame that is one tile needs no columns beside it but mirrored ones.
int tile_margin(const MosaicFrame& f) { return f.width <= kTile ? 0 : kTileMargin; }

using TileSamples = MirroredStrip<8, kBeside, kTile, kTileMargin>;
struct TileRows {
  // As many rows of the differences along them.
  explicit TileRows(int along) : qh(along), ah3(along) {}
  WordRows<8> qh, ah3;
  WordRows<4> pv, av3;
  alignas(64) WordRow qv, e, act, work[5];
  alignas(64) uint8_t planes[3 * kPlanePitch];
};

void convert_tile(const Kernels& kernels, const MosaicFrame& f, DemosaicMode mode, const Tile& tile,
                  TileSamples& samples, TileRows& rows) {
  const DemosaicKernels& k = kernels.demosaic;
  const bool edge_aware = mode == DemosaicMode::lcaav;
  const auto step = edge_aware ? k.lcaav : k.lcaa;
  const auto direction = edge_aware ? k.direction_and_activity : k.direction;
  // How far below the row that is written the differences along a row must be known, and how far
  // samples are fetched.
  const int reach = edge_aware ? 3 : 1;
  constexpr int kAhead = 5;
  static_assert(kAhead + 2 <= TileSamples::kRows, "rows y - 1 .. y + kAhead");
  const size_t pixels = size_t{f.width} * f.height;
  RowWriter write(kernels, Source::planes8, f.sink, pixels, pixels);
  // What the vectors compute beyond the samples beside the tile reaches no pixel that is written.
  const int margin = tile_margin(f);
  const size_t words =
      static_cast<size_t>(tile_words(margin, static_cast<int>(tile.columns), k.step));

  RowRing<const uint8_t, 8> z;
  for (int i = 0; i < 8; ++i) z.place(i, samples[i] - margin);
  const auto add_row = [&](int64_t y) { k.along_row(z[y], rows.qh[y], rows.ah3[y], words); };
  const auto add_columns = [&](int64_t y) {
    k.down_column(z.from(y - 2), rows.pv[y], rows.av3[y], words);
  };

  const int64_t first = tile.begin;
  samples.begin(tile.x, tile.columns);
  for (int64_t y = first - 3; y < first + kAhead; ++y) samples.fetch(y, source_row(f, y));
  for (int64_t y = first - reach; y <= first + reach; ++y) add_row(y);
  add_columns(first - 1);
  add_columns(first);
  DemosaicTile t = {};
  t.qv = rows.qv + kTileSlack;
  t.e = rows.e + kTileSlack;
  t.act = rows.act + kTileSlack;
  for (int i = 0; i < 5; ++i) t.work[i] = rows.work[i] + kTileSlack;
  for (int i = 0; i < 3; ++i) t.planes[i] = rows.planes + i * kPlanePitch;
  t.words = words;

  RowArgs args;
  // Tiles walk down: what comes next is on other pages, where no hardware prefetches it.
  const size_t dst_pitch = size_t{f.width} * pixel_bytes(f.sink);
  args.write_ahead = static_cast<ptrdiff_t>(dst_pitch);
  const uint8_t* ahead = source_row(f, first + kAhead);
  uint8_t* dst = f.dst + tile.begin * dst_pitch + tile.x * pixel_bytes(f.sink);
  for (uint32_t row = tile.begin; row < tile.end; ++row, dst += dst_pitch) {
    const int64_t y = row;
    samples.fetch(y + kAhead, ahead);
    ahead = source_row(f, y + kAhead + 1);
    add_columns(y + 1);
    direction(rows.pv.from(y - 1), rows.ah3.from(y - 1), rows.av3.from(y - 1), rows.qv + kTileSlack,
              rows.e + kTileSlack, rows.act + kTileSlack, words);
    add_row(y + reach + 1);  // here, so that the direction is stored when its neighbours are read
    t.z = z.from(y - 1);
    t.qh = rows.qh.from(y - 3);
    t.native = native_column(f, row);
    step(t);

    // The own colour is red or blue: the planes are read forwards or backwards.
    const bool red = is_red_row(f, row);
    const uint8_t* const planes = (red ? t.planes[0] : t.planes[2]) + margin;
    args.pitch = red ? kPlanePitch : -kPlanePitch;
    args.ahead_of_a = distance(planes, ahead + tile.x);
    write(dst, planes, nullptr, tile.columns, args);
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
      convert_bilinear(kernels, frame);
      return;
    case DemosaicMode::yuv422:
      convert_paired_chroma(kernels, frame);
      return;
    case DemosaicMode::lcaa:
    case DemosaicMode::lcaav:
      break;
  }
  TileSamples samples(frame.width, tile_margin(frame));
  TileRows rows(mode == DemosaicMode::lcaav ? 8 : 4);
  each_tile(frame.width, frame.height, kTile,
            [&](const Tile& tile) { convert_tile(kernels, frame, mode, tile, samples, rows); });
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
