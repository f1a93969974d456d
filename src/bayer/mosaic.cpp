// SPDX-License-Identifier: MIT
#include "bayer/mosaic.h"

#include <string.h>

#include <algorithm>

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

// Columns are taken in strips, so that two reduced rows stay in the first-level cache and on the
// stack, whatever the width.
constexpr uint32_t kStrip = 4096;

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
  copy_last_row(f);
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
  args.column = f.red.column;
  const size_t src_row = row_bytes(reduction.source, f.width);
  const size_t dst_row = f.width * pixel_bytes(f.sink);
  RowWriter write(kernels, mosaic, f.sink, src_row * f.height, size_t{f.width} * f.height);
  if (!write.streams() && f.width % 2 == 0 &&
      f.width * pixel_bytes(reduction.sink) <= kWidestOfBand) {
    return convert_in_bands(f, reduce, reduction, write, args);
  }
  // The two pixels beyond a strip give its last pixel the sample that it needs on its right; their
  // own values come with the next strip.
  constexpr uint32_t kBeyond = 2;
  alignas(64) uint8_t reduced[2][(kStrip + kBeyond) * sizeof(uint16_t)];

  for (uint32_t x = 0; x < f.width;) {
    const uint32_t left = f.width - x;
    const uint32_t n = left <= kStrip + kBeyond ? left : kStrip + kBeyond;
    const uint8_t* src = f.src + row_bytes(reduction.source, x);
    uint8_t* dst = f.dst + x * pixel_bytes(f.sink);
    reduce(reduced[0], src, nullptr, n, reduction.args);
    for (uint32_t y = 0; y + 1 < f.height; ++y) {
      src += src_row;
      const uint8_t* const upper = reduced[y & 1];
      uint8_t* const lower = reduced[(y + 1) & 1];
      reduce(lower, src, nullptr, n, reduction.args);
      const bool red_above = red_in_row(f, y);
      const uint8_t* const red = red_above ? upper : lower;
      const uint8_t* const blue = red_above ? lower : upper;
      args.ahead_of_a = distance(red, src + src_row);
      args.ahead_of_b = distance(blue, src + src_row + n);
      write(dst, red, blue, n, args);
      dst += dst_row;
    }
    write.finish();  // the next strip writes the pixels beyond this one again
    x += n == left ? n : kStrip;
  }
  copy_last_row(f);
}

}  // namespace lum
