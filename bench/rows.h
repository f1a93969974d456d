// SPDX-License-Identifier: MIT
// What is measured: every conversion that the library has.
#ifndef LUM_BENCH_ROWS_H
#define LUM_BENCH_ROWS_H

#include <stdint.h>

#include <functional>
#include <string>
#include <vector>

#include "roofline.h"
#include "simd/isa.h"

namespace lum::bench {

struct Frame {
  uint8_t* dst;
  uint8_t* src;  // the same as dst for rows that work in place
  uint32_t width, height;
};

struct Row {
  std::string name;
  // A source pixel's bytes as a fraction: packed formats have groups.
  unsigned group_pixels, group_bytes;
  unsigned pixel_bytes;  // of the destination
  bool keeps_fourth, in_place;
  unsigned width_multiple, height_multiple;
  std::function<void(const Kernels&, const Frame&)> run;
  unsigned dst_group_pixels = 1;  // the pixels that pixel_bytes are of

  bool takes(uint32_t width, uint32_t height) const {
    return width % width_multiple == 0 && height % height_multiple == 0;
  }
  Traffic traffic(uint32_t width, uint32_t height) const;
};

constexpr unsigned kLargestSourcePixel = 12, kLargestDestinationPixel = 12;

// A usual camera matrix: rows R, G, B, coefficients times 1024 that add up to 1024.
constexpr int32_t kMatrixTimes1024[9] = {1590, -430, -136, -210, 1480, -246, -60, -540, 1624};

std::vector<Row> all_rows();
void add_direct(std::vector<Row>& rows);

}  // namespace lum::bench

#endif
