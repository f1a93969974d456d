// SPDX-License-Identifier: MIT
#include "bayer/binned.h"

#include <utility>

#include "arguments.h"
#include "lum/lum.h"
#include "mirrored_rows.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {

void convert_mosaic_binned(const Kernels& kernels, const MosaicFrame& f) {
  RowWriter write(kernels, Source::mosaic8_binned, f.sink, size_t{f.width} * f.height,
                  size_t{f.width / 2} * (f.height / 2));
  const size_t pixel = pixel_bytes(f.sink);
  using Strip = MirroredStrip<8, 2>;
  constexpr int kAhead = 5;
  static_assert(kAhead + 3 <= Strip::kRows, "rows y - 1 .. y + kAhead + 1");
  Strip strip(f.width);
  const auto source_row = [&](int64_t y) { return mirrored_row(f.src, f.width, f.height, y); };
  each_tile(f.width, f.height, Strip::kColumns, [&](const Tile& tile) {
    strip.begin(tile.x, tile.columns);
    const size_t dst_pitch = f.width / 2 * pixel;
    uint8_t* dst = f.dst + tile.begin / 2 * dst_pitch + tile.x / 2 * pixel;
    const int64_t first = tile.begin;
    for (int64_t y = first - 1; y < first + kAhead; ++y) strip.fetch(y, source_row(y));
    const uint8_t* ahead = source_row(first + kAhead);
    RowArgs args;
    args.column = f.red.column;
    for (int64_t y = first; y < tile.end; y += 2) {
      strip.fetch(y + kAhead, ahead);
      strip.fetch(y + kAhead + 1, source_row(y + kAhead + 1));
      ahead = source_row(y + kAhead + 2);
      // Across the cell: from its upper row to the one below it, from its lower row to the one
      // above.
      const bool red_above = f.red.row == 0;
      const uint8_t *red = strip[y], *far_red = strip[y + 2];
      const uint8_t *blue = strip[y + 1], *far_blue = strip[y - 1];
      if (!red_above) {
        std::swap(red, blue);
        std::swap(far_red, far_blue);
      }
      args.above = far_red - red;
      args.below = blue - red;
      args.below2 = far_blue - red;
      args.ahead_of_a = distance(red, ahead + tile.x);
      write(dst, red, nullptr, tile.columns / 2, args);
      dst += dst_pitch;
    }
  });
}

}  // namespace lum

using namespace lum;

uint32_t LumRaw8ImageTransform_Bin(uint8_t* dst, const uint8_t* src, uint32_t width,
                                   uint32_t height, uint32_t formatIndex, uint32_t bayerPattern) {
  if (const uint32_t error = check_mosaic(dst, src, width, height, bayerPattern)) return error;
  if (formatIndex > LUM_FORMAT_UYVY) return kNotImplemented;
  if (formatIndex == LUM_FORMAT_UYVY && width % 4 != 0) return bad_parameter(3);
  convert_mosaic_binned(kernels(), {dst, src, width, height, red_phase(bayerPattern),
                                    static_cast<Sink>(formatIndex)});
  return kSuccess;
}
