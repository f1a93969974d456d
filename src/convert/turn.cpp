// SPDX-License-Identifier: MIT
// Rows and columns exchanged, block by block. Small pixels where registers are few, and rows that
// would push one another out of the cache, go by way of a stage on the stack.
#include <string.h>

#include <algorithm>

#include "convert/direct.h"
#include "row_writer.h"

namespace lum {
namespace {

constexpr size_t kMostBlockBytes = 32 << 10;
// A block that is streamed: of fewer than 8 bytes a pixel, of more, and of bytes either way.
constexpr size_t kMostRows = 64, kMostColumns = 64, kFewColumns = 32, kMostBytes = 128;
// Columns of a block of bytes, of kMostRows, that is not.
constexpr size_t kManyColumns = 256;
constexpr size_t kMostOut = kMostBlockBytes + kMostColumns * kSpareBytes;
constexpr bool has_room(size_t rows, size_t columns, size_t pixel_bytes) {
  return rows * columns * pixel_bytes <= kMostBlockBytes &&
         columns * (rows * pixel_bytes + kSpareBytes) <= kMostOut;
}
static_assert(has_room(kMostRows, kMostColumns, 7), "stage and result");
static_assert(has_room(kMostRows, kFewColumns, kMaxPixelBytes), "stage and result");
static_assert(has_room(kMostBytes, kMostBytes, 1), "stage and result");
static_assert(has_room(kMostRows, kManyColumns, 1), "stage and result");

size_t round_up(size_t n, size_t step) { return (n + step - 1) / step * step; }

struct Image {
  uint8_t* dst;
  const uint8_t* src;
  ptrdiff_t dst_stride, src_stride;
  size_t rows, columns;  // of the source, as in a block
};
struct Block {
  size_t row, column, rows, columns;
};

class Transposer {
 public:
  Transposer(const Kernels& kernels, const Image& image, size_t pixel_bytes)
      : kernels_(kernels.direct.transpose[pixel_bytes]),
        stream_rows_(kernels.direct.stream_rows),
        image_(image),
        size_(pixel_bytes),
        // Lines that lie so far apart are lost to the cache earlier than those of rows.
        streamed_(is_streamed(kernels, 2 * image.rows * image.columns * pixel_bytes)) {}

  void run() {
    size_t most_rows, most_columns;
    if (kernels_.staged) {
      most_rows = streamed_ ? 256 / size_ : 192;
      most_columns = streamed_ ? 64 : kCacheLine / size_;
    } else if (streamed_) {  // pieces of two lines and more, to read and to write
      most_rows = size_ == 1 ? kMostBytes : kMostRows;
      most_columns = size_ == 1 ? kMostBytes : size_ < 8 ? kMostColumns : kFewColumns;
    } else {  // whole lines down a column, and few of them
      most_rows = size_ % 4 == 0 ? 16 : size_ % 2 == 0 ? 32 : kMostRows;
      most_columns = size_ == 1 ? kManyColumns : std::min<size_t>(64, 256 / size_);
    }
    over_blocks(image_.rows, most_rows, [&](size_t row, size_t rows) {
      over_blocks(image_.columns, most_columns, [&](size_t column, size_t columns) {
        block({row, column, rows, columns});
      });
    });
  }

 private:
  // Calls block(start, n) for pieces of 0 .. total - 1. All are whole granules, so that the last
  // one may overlap the one before it; only what is smaller than a granule altogether is not.
  template <class F>
  void over_blocks(size_t total, size_t most, F block) const {
    const size_t granule = kernels_.granule;
    if (total < granule) return block(0, total);
    for (size_t x = 0; x < total;) {
      const size_t least = std::min(total - x, std::max(most, granule));
      const size_t n = least / granule * granule;
      if (n == 0) return block(total - granule, granule);
      block(x, n);
      x += n;
    }
  }

  const uint8_t* source(size_t row, size_t column) const {
    return image_.src + static_cast<ptrdiff_t>(row) * image_.src_stride + column * size_;
  }

  void block(const Block& b) {
    const size_t rows = round_up(b.rows, kernels_.granule);
    const size_t columns = round_up(b.columns, kernels_.granule);
    const bool partial = b.rows != rows || b.columns != columns;
    const uint8_t* src = source(b.row, b.column);
    ptrdiff_t src_stride = image_.src_stride;
    if (partial || kernels_.staged || src_stride % kConflict == 0 || reads_beyond(b)) {
      const size_t pitch = columns * size_;
      if (partial && kernels_.staged) {
        for (size_t i = 0; i < b.rows; ++i) {
          memcpy(out_ + i * pitch, source(b.row + i, b.column), b.columns * size_);
        }
        src = out_;
        src_stride = static_cast<ptrdiff_t>(pitch);
      }
      const bool whole = kernels_.staged;
      kernels_.to_stage(stage_, pitch, src, src_stride, whole ? rows : b.rows,
                        whole ? pitch : b.columns * size_);
      src = stage_;
      src_stride = static_cast<ptrdiff_t>(pitch);
    }

    uint8_t* const dst =
        image_.dst + static_cast<ptrdiff_t>(b.column) * image_.dst_stride + b.row * size_;
    if (!partial && !streamed_ && !writes_beyond(b)) {
      kernels_.transpose(dst, image_.dst_stride, src, src_stride, rows, columns);
      return;
    }
    const ptrdiff_t pitch = static_cast<ptrdiff_t>(rows * size_ + kSpareBytes);
    kernels_.transpose(out_, pitch, src, src_stride, rows, columns);
    const ByteRows out = {out_, pitch, b.columns, b.rows * size_};
    if (streamed_) {
      stream_rows_(dst, image_.dst_stride, out, rows_after(b));
    } else {
      for (size_t i = 0; i < out.count; ++i) {
        const ptrdiff_t y = static_cast<ptrdiff_t>(i);
        memcpy(dst + y * image_.dst_stride, out_ + y * pitch, out.bytes);
      }
    }
  }

  // What lies beyond a block's rows is the image's but for the last row in memory.
  bool reads_beyond(const Block& b) const {
    if (kernels_.exact || (image_.columns - b.column - b.columns) * size_ >= kSpareBytes) {
      return false;
    }
    return image_.src_stride < 0 ? b.row == 0 : b.row + b.rows == image_.rows;
  }
  // There what is written later makes good what was written beyond, but for the end of a row.
  bool writes_beyond(const Block& b) const {
    return !kernels_.exact && (image_.rows - b.row - b.rows) * size_ < kSpareBytes;
  }

  // The source of the next block.
  ByteRows rows_after(const Block& b) const {
    const bool right = b.column + b.columns < image_.columns;
    const size_t row = right ? b.row : b.row + b.rows, column = right ? b.column + b.columns : 0;
    return {source(row, column), image_.src_stride, std::min(b.rows, image_.rows - row),
            std::min(b.columns, image_.columns - column) * size_};
  }

  const Transposition& kernels_;
  const decltype(DirectKernels::stream_rows) stream_rows_;
  const Image& image_;
  const size_t size_;
  const bool streamed_;
  alignas(64) uint8_t stage_[kMostBlockBytes + kSpareBytes];
  alignas(64) uint8_t out_[kMostOut];
};

}  // namespace

void transpose(const Kernels& kernels, uint8_t* dst, const uint8_t* src, size_t width,
               size_t height, size_t pixel_bytes, uint32_t mode) {
  Image image = {dst,
                 src,
                 static_cast<ptrdiff_t>(height * pixel_bytes),
                 static_cast<ptrdiff_t>(width * pixel_bytes),
                 height,
                 width};
  if (mode & kMirror) {
    image.src += static_cast<ptrdiff_t>(height - 1) * image.src_stride;
    image.src_stride = -image.src_stride;
  }
  if (mode & kUpsideDown) {
    image.dst += static_cast<ptrdiff_t>(width - 1) * image.dst_stride;
    image.dst_stride = -image.dst_stride;
  }
  Transposer(kernels, image, pixel_bytes).run();
}

}  // namespace lum
