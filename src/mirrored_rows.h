// SPDX-License-Identifier: MIT
// Copies of a frame's rows with mirrored samples beside them, for kernels that look beyond a
// pixel's own columns. Copies stay in the first-level cache, taken in tiles whatever the width.
#ifndef LUM_MIRRORED_ROWS_H
#define LUM_MIRRORED_ROWS_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <type_traits>

#include "simd/kernel_table.h"

namespace lum {

// Mirrors an index about the first and the last one, again and again: -1 is 1, n is n - 2. That
// keeps the parity and so the colour.
inline int64_t mirrored(int64_t i, int64_t n) {
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}

// Row y of a frame, mirrored likewise.
inline const uint8_t* mirrored_row(const uint8_t* frame, uint32_t width, uint32_t height,
                                   int64_t y) {
  return frame + static_cast<size_t>(mirrored(y, height)) * width;
}

// Samples of a row of `width` from column `first` on, `count` of them, mirrored where the row ends.
inline void copy_mirrored(uint8_t* to, const uint8_t* row, int64_t width, int64_t first,
                          int64_t count) {
  const int64_t begin = std::clamp<int64_t>(-first, 0, count);
  const int64_t end = std::clamp<int64_t>(width - first, begin, count);
  for (int64_t i = 0; i < begin; ++i) to[i] = row[mirrored(first + i, width)];
  memcpy(to + begin, row + first + begin, static_cast<size_t>(end - begin));
  for (int64_t i = end; i < count; ++i) to[i] = row[mirrored(first + i, width)];
}

// N bytes in reverse order.
template <int N>
inline void copy_reversed(uint8_t* to, const uint8_t* from) {
  static_assert(N == 2 || N == 4 || N == 8, "a number of so many bytes");
  std::conditional_t<N == 2, uint16_t, std::conditional_t<N == 4, uint32_t, uint64_t>> v;
  memcpy(&v, from, N);
  v = static_cast<decltype(v)>(__builtin_bswap64(v) >> (64 - 8 * N));
  memcpy(to, &v, N);
}

// Not inline: what g++ makes of a memcpy() whose length it knows to be moderate is a string
// instruction, which is slow to start.
void copy_bytes(uint8_t* to, const uint8_t* from, size_t bytes);

// Rows by number: N of them, a power of two, and row y + N is in the place of row y.
template <class T, int N>
class RowRing {
 public:
  void place(int slot, T* row) { rows_[slot] = rows_[slot + N] = row; }  // of 0 to N - 1
  T* operator[](int64_t y) const { return *from(y); }
  // Rows y, y + 1 ... y + N - 1 in order.
  T* const* from(int64_t y) const { return rows_ + (y & (N - 1)); }

 private:
  T* rows_[2 * N];
};

// A part of a frame: columns x to x + columns - 1 of rows `begin` to end - 1.
struct Tile {
  uint32_t x, columns;
  uint32_t begin, end;
};

// Calls convert(tile) for tiles of so many columns, fewer in the last one, from the left. Tiles of
// a wide frame end after kTileRows as well: each row is on pages of its own, and those of so many
// rows are still known to the processor when the next tile comes to them. No sum of x and `columns`
// may be made: that of the widest frames is beyond 32 bits.
constexpr uint32_t kTileRows = 512;  // a multiple of 4, after which all patterns of samples repeat
template <class F>
inline void each_tile(uint32_t width, uint32_t height, uint32_t columns, F convert) {
  const uint32_t most_rows = width <= columns ? height : kTileRows;
  for (uint32_t y = 0, rows; y < height; y += rows) {
    rows = std::min(most_rows, height - y);
    for (uint32_t x = 0, n; x < width; x += n) {
      n = std::min(columns, width - x);
      convert(Tile{x, n, y, y + rows});
    }
  }
}

// The last rows of a tile, by row number: kRows of them, a power of two, with kBeside bytes more
// on either side. The byte `aligned` before a row's first one, at most `most_aligned`, begins a
// vector. Those of a narrow frame lie close together: caches hold them best so, and there is little
// to be cleared at first, as what lies behind a row may be read.
template <int rows, int kBeside, uint32_t columns = 4096, int most_aligned = 0>
class MirroredStrip {
 public:
  static constexpr int kRows = rows;
  static constexpr uint32_t kColumns = columns;

  explicit MirroredStrip(uint32_t width, int aligned = 0) : width_(width) {
    const size_t pitch = (kAround + std::min(width, kColumns) + 63) / 64 * 64;
    memset(bytes_, 0, kRows * pitch);
    for (int i = 0; i < kRows; ++i) rows_.place(i, bytes_ + i * pitch + 64 + aligned);
  }

  MirroredStrip(const MirroredStrip&) = delete;
  MirroredStrip& operator=(const MirroredStrip&) = delete;

  // From now on columns x to x + n - 1 of rows are fetched, and those beside them.
  void begin(uint32_t x, uint32_t n) {
    const uint32_t rest = width_ - x - n;
    x_ = x;
    n_ = n;
    before_ = x == 0 ? 0 : kBeside;
    behind_ = rest == 0 ? 0 : kBeside;
    few_ = width_ <= kBeside || (rest > 0 && rest < kBeside);
  }
  // Some rows before it is read: a load of what has just been stored in pieces, at the sides of a
  // row, would wait.
  void fetch(int64_t y, const uint8_t* row) {
    uint8_t* const to = rows_[y];
    if (few_) {
      copy_mirrored(to - kBeside, row, width_, int64_t{x_} - kBeside, int64_t{n_} + 2 * kBeside);
      return;
    }
    copy_bytes(to - before_, row + x_ - before_, before_ + n_ + behind_);
    if (before_ == 0) copy_reversed<kBeside>(to - kBeside, row + 1);
    if (behind_ == 0) copy_reversed<kBeside>(to + n_, row + width_ - 1 - kBeside);
  }
  const uint8_t* operator[](int64_t y) const { return rows_[y]; }

 private:
  static constexpr size_t kAround = 64 + most_aligned + 2 * kPaddedBytes;

  const uint32_t width_;
  uint32_t x_ = 0, n_ = 0, before_ = 0, behind_ = 0;
  bool few_ = false;
  RowRing<uint8_t, kRows> rows_;
  alignas(64) uint8_t bytes_[kRows * ((kAround + kColumns + 63) / 64 * 64)];
};

}  // namespace lum

#endif
