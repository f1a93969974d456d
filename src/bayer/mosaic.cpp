// SPDX-License-Identifier: MIT
#include "bayer/mosaic.h"

#include <string.h>

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

// A frame that fits a strip is reduced in one go: the calls are what a small one takes.
void convert_small_reduced(const MosaicFrame& f, RowKernel reduce, const Reduction& reduction,
                           RowKernel kernel, const RowArgs& args) {
  alignas(64) uint8_t reduced[kStrip * sizeof(uint16_t)];
  reduce(reduced, f.src, nullptr, size_t{f.width} * f.height, reduction.args);
  const size_t row = f.width * pixel_bytes(reduction.sink), dst_row = f.width * pixel_bytes(f.sink);
  const uint8_t* upper = reduced;
  uint8_t* dst = f.dst;
  for (uint32_t y = 0; y + 1 < f.height; ++y, upper += row, dst += dst_row) {
    const bool red_above = red_in_row(f, y);
    kernel(dst, red_above ? upper : upper + row, red_above ? upper + row : upper, f.width, args);
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
  const RowWriter write(kernels, mosaic, f.sink, pixels, pixels);
  args.column = f.red.column;
  const size_t row_bytes = f.width * pixel_bytes(f.sink);
  const uint8_t* upper = f.src;
  uint8_t* dst = f.dst;
  for (uint32_t y = 0; y + 1 < f.height; ++y) {
    const uint8_t* const lower = upper + f.width;
    const bool red_above = red_in_row(f, y);
    write(dst, red_above ? upper : lower, red_above ? lower : upper, f.width, args);
    dst += row_bytes;
    upper = lower;
  }
  copy_last_row(f);
}

void convert_mosaic_reduced(const Kernels& kernels, const MosaicFrame& f,
                            const Reduction& reduction, Source mosaic, RowArgs args) {
  const RowKernel reduce = kernels.at(reduction.source, reduction.sink);
  const RowKernel kernel = kernels.at(mosaic, f.sink);
  args.column = f.red.column;
  // Of an even width rows are whole groups, so that they can be taken as one.
  if (size_t{f.width} * f.height <= kStrip && f.width % 2 == 0) {
    return convert_small_reduced(f, reduce, reduction, kernel, args);
  }
  const size_t src_row = row_bytes(reduction.source, f.width);
  const size_t dst_row = f.width * pixel_bytes(f.sink);
  const RowWriter write(kernels, mosaic, f.sink, src_row * f.height, size_t{f.width} * f.height);
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
    x += n == left ? n : kStrip;
  }
  copy_last_row(f);
}

}  // namespace lum
