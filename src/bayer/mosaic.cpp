// SPDX-License-Identifier: MIT
#include "bayer/mosaic.h"

#include <string.h>

#include <algorithm>
#include <utility>

#include "row_writer.h"

namespace lum {
namespace {

// The last row has no row below it and repeats the one above, bytes that are never written
// included.
void copy_last_row(const MosaicFrame& f) {
  const size_t row_bytes = f.width * pixel_bytes(f.sink);
  uint8_t* const last = f.dst + (f.height - 1) * row_bytes;
  memcpy(last, last - row_bytes, row_bytes);
}

bool red_in_row(const MosaicFrame& f, uint32_t y) { return ((y + f.red.row) & 1) == 0; }

// Columns are taken in strips, so that the reduced rows stay in the first-level cache and on the
// stack, whatever the width.
constexpr uint32_t kStrip = 4096;

// From row to row, not a multiple of 4096 bytes: loads wait for stores whose addresses differ by
// that.
constexpr size_t kPitch = kStrip * sizeof(uint16_t) + 1344;

Source beside_deep(Source mosaic, Source deep) {
  for (const MosaicBesideDeep& source : kMosaicsBesideDeep) {
    if (source.mosaic == mosaic && source.deep == deep) return source.both;
  }
  return mosaic;
}

// Row by row. The lower row of the two is reduced before they are converted, or with `beside` the
// one below it meanwhile.
void convert_row_by_row(const MosaicFrame& f, RowKernel reduce, const Reduction& reduction,
                        bool beside, RowWriter& write, RowArgs& args) {
  const size_t src_row = row_bytes(reduction.source, f.width);
  const size_t pixel = pixel_bytes(f.sink), dst_row = f.width * pixel;
  // The two pixels beyond a strip give its last pixel the sample that it needs on its right; their
  // own values come with the next strip.
  constexpr uint32_t kBeyond = 2;
  static_assert(kPitch >= (kStrip + kBeyond) * sizeof(uint16_t), "room for a row");
  alignas(64) uint8_t reduced[3][kPitch];
  if (write.small()) args.write_ahead = 0;

  for (uint32_t x = 0; x < f.width;) {
    const uint32_t left = f.width - x;
    const uint32_t n = left <= kStrip + kBeyond ? left : kStrip + kBeyond;
    const uint8_t* src = f.src + row_bytes(reduction.source, x);
    uint8_t* dst = f.dst + x * pixel;
    uint8_t *upper = reduced[0], *lower = reduced[1], *next = reduced[2];
    reduce(upper, src, nullptr, n, reduction.args);
    if (beside) reduce(lower, src + src_row, nullptr, n, reduction.args);
    for (uint32_t y = 0; y + 1 < f.height; ++y) {
      const bool red_above = red_in_row(f, y);
      const uint8_t* const red = red_above ? upper : lower;
      const uint8_t* const blue = red_above ? lower : upper;
      // Below the frame's last row that one once more.
      const uint8_t* const deep = src + std::min(y + (beside ? 2 : 1), f.height - 1) * src_row;
      if (beside) {
        args.deep = deep;
        args.beside_deep = red;
        args.reduced = next;
      } else {
        reduce(lower, deep, nullptr, n, reduction.args);
      }
      args.ahead_of_a = distance(red, deep + src_row);
      args.ahead_of_b = distance(blue, deep + src_row + n);
      write(dst, red, blue, n, args);
      dst += dst_row;
      std::swap(upper, lower);
      if (beside) std::swap(lower, next);
    }
    write.finish();  // the next strip writes the pixels beyond this one again
    x += n == left ? n : kStrip;
  }
}

// Rows of an even width are whole groups, so that a band of them is reduced in one go and converted
// in one go. So many bytes, and what is made of them, stay in the first-level cache: stores that
// wait for the next one do not hold up what the next band reads.
constexpr size_t kBand = 6400;
constexpr uint32_t kFewestRows = 3;  // of which two are made together
constexpr size_t kWidestOfBand = kBand / kFewestRows;

void convert_in_bands(const MosaicFrame& f, RowKernel reduce, const Reduction& reduction,
                      RowWriter& write, RowArgs& args) {
  alignas(64) uint8_t band[kBand];
  const size_t row = f.width * pixel_bytes(reduction.sink), dst_row = f.width * pixel_bytes(f.sink);
  const size_t src_row = row_bytes(reduction.source, f.width);
  const uint32_t fitting = row * f.height <= kBand
                               ? f.height
                               : static_cast<uint32_t>((kBand / row - 1) & ~size_t{1}) + 1;
  const uint8_t* src = f.src;
  uint8_t* dst = f.dst;
  uint32_t kept = 0;  // rows of the band that are there already: 1 after the first
  for (uint32_t y = 0; y + 1 < f.height;) {
    const uint32_t rows = std::min(fitting, f.height - y);
    reduce(band + kept * row, src, nullptr, size_t{f.width} * (rows - kept), reduction.args);
    src += src_row * (rows - kept);
    args.ahead_of_a = args.ahead_of_b = distance(band + row, src);  // what the next band is made of
    const bool red_above = red_in_row(f, y);
    write.rows(dst, red_above ? band : band + row, red_above ? band + row : band, f.width, rows - 1,
               args);
    memcpy(band, band + (rows - 1) * row, row);
    kept = 1;
    dst += (rows - 1) * dst_row;
    y += rows - 1;
  }
}

}  // namespace

Reduction reduce_mono16(Sink sink, uint32_t shift, uint32_t big_endian) {
  Reduction reduction = {Source::mono16, Sink::mono8_rec601, {}};
  if (sink >= Sink::mono16_rec601) reduction.sink = Sink::mono16_rec601;
  reduction.args.shift = shift;
  reduction.args.big_endian = big_endian;
  return reduction;
}

void convert_mosaic8(const Kernels& kernels, const MosaicFrame& f, Source mosaic, RowArgs args) {
  const size_t pixels = size_t{f.width} * f.height;
  RowWriter write(kernels, mosaic, f.sink, pixels, pixels);
  if (write.streams()) args.ahead_of_a = args.ahead_of_b = kernels.streamed_ahead;
  args.column = f.red.column;
  const uint8_t* const second = f.src + f.width;
  const bool red_above = red_in_row(f, 0);
  write.rows(f.dst, red_above ? f.src : second, red_above ? second : f.src, f.width, f.height - 1,
             args);
  write.finish();
  copy_last_row(f);
}

void convert_mosaic_reduced(const Kernels& kernels, const MosaicFrame& f,
                            const Reduction& reduction, Source mosaic, RowArgs args) {
  const RowKernel reduce = kernels.at(reduction.source, reduction.sink);
  const size_t src_bytes = row_bytes(reduction.source, f.width) * f.height;
  const size_t pixels = size_t{f.width} * f.height;
  args.column = f.red.column;
  args.shift = reduction.args.shift;
  args.big_endian = reduction.args.big_endian;
  const Source both = beside_deep(mosaic, reduction.source);
  const bool fits_band = f.width % 2 == 0 && f.width * pixel_bytes(reduction.sink) <= kWidestOfBand;
  const bool in_cache = !is_streamed(kernels, src_bytes + pixels * pixel_bytes(f.sink));
  // In bands two rows share what one of them is loaded and sorted for, and each costs less to
  // begin.
  constexpr uint32_t kLeastWidth = 256;
  const bool writes_much = pixel_bytes(f.sink) > 2 && f.width >= kernels.least_beside_deep;
  const bool beside =
      both != mosaic && f.width >= kLeastWidth && (!fits_band || !in_cache || writes_much);
  RowWriter write(kernels, beside ? both : mosaic, f.sink, src_bytes, pixels);
  if (fits_band && !beside && !write.streams()) {
    convert_in_bands(f, reduce, reduction, write, args);
  } else {
    convert_row_by_row(f, reduce, reduction, beside, write, args);
  }
  copy_last_row(f);
}

}  // namespace lum
