// SPDX-License-Identifier: MIT
// Rows of a frame to memory: by a row kernel as it stands, or past the cache where the frame would
// not stay in it anyway. An ordinary store to a line that is not cached fetches the line first;
// whole lines that are streamed are only written, which saves up to half of the traffic. They go
// there from registers, from the first line of a row that begins with a pixel to the last whole
// one; the end of a row and the beginning of the next make up lines in a stage (StagedLines). So
// does all of a row where no line begins with a pixel, as with words at an odd address.
#ifndef LUM_ROW_WRITER_H
#define LUM_ROW_WRITER_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>

#include "simd/kernel_table.h"

namespace lum {

// Whether a conversion that reads and writes so many bytes is streamed. What kept_in_cache() says
// is not: the output may stay there, and what reads it next finds it. A size alone cannot tell a
// cold frame from a warm one; this rule loses least over both.
bool is_streamed(const Kernels& kernels, size_t bytes);

// The pixels of a row as they are streamed.
struct StreamedPixels {
  size_t bytes;  // of one, at most 16
  size_t group;  // pixels that cannot be taken apart, 1, 2 or 4
};

// How many pixels are before the first line of a cache that is streamed, by whole groups: none or
// so many that they are a kernel's block. n if no pixel of the n begins a line, or only one with
// less than a group behind it.
constexpr size_t kMostToLine = kStreamedGroup + kCacheLine;
size_t pixels_to_line(const uint8_t* dst, size_t n, const StreamedPixels& pixels);

// Bytes to be written past the cache that do not yet make up whole lines. They wait in a piece of
// stack, in the first-level cache, until it is full or bytes come that do not follow them; so the
// end of a row and the beginning of the next are copied as whole lines. That is a row later, which
// is as well: loads of what has just been stored in other pieces wait for all that is being
// streamed.
class StagedLines {
 public:
  static constexpr size_t kPiece = 4096;  // bytes that stream_pixels() writes at once, at most
  static constexpr size_t kBeyond = 128;  // bytes that may be written beyond them

  explicit StagedLines(const Kernels& kernels) : kernels_(kernels) {}
  StagedLines(const StagedLines&) = delete;
  StagedLines& operator=(const StagedLines&) = delete;

  // Where to write `bytes` for dst, at most 2 * kPiece.
  uint8_t* at(uint8_t* dst, size_t bytes);
  // Copies the whole lines; what is left of another one stays.
  void flush_lines();
  // All is in memory, for other processors as well.
  void finish() {
    flush();
    first_ = nullptr;  // nothing follows it
    begin_ = end_ = 0;
    kernels_.end_stream();
  }

 private:
  static constexpr size_t kRoom = kCacheLine + 2 * kPiece;  // with what a line has before them

  void flush();

  const Kernels& kernels_;
  uint8_t* first_ = nullptr;    // what the first byte of the stage is for: begins a line
  size_t begin_ = 0, end_ = 0;  // staged and not copied
  alignas(kCacheLine) uint8_t bytes_[kRoom + kBeyond];
};

// Writes n pixels past the cache. write(to, x, count) and stream(to, x, count) make pixels x to x +
// count - 1, x a multiple of the group; the former may write two pixels more unless they are the
// last, the latter is a StreamedRowKernel or returns 0.
template <class Write, class Stream>
void stream_pixels(StagedLines& staged, uint8_t* dst, size_t n, const StreamedPixels& pixels,
                   const Write& write, const Stream& stream) {
  constexpr size_t kMostOfPixel = 16;
  static_assert(kMostToLine * kMostOfPixel <= StagedLines::kPiece, "room");
  static_assert(2 * kMostOfPixel <= StagedLines::kBeyond, "room");
  const auto stage = [&](size_t x, size_t count) {
    write(staged.at(dst + x * pixels.bytes, count * pixels.bytes), x, count);
  };
  size_t x = pixels_to_line(dst, n, pixels);
  if (x < n) {
    if (x > 0) stage(0, x);
    x += stream(dst + x * pixels.bytes, x, n - x);
  } else {
    x = 0;
  }
  const size_t piece = StagedLines::kPiece / pixels.bytes / kStreamedGroup * kStreamedGroup;
  for (size_t count = 0; x < n; x += count) {
    count = std::min(piece, n - x);
    if (n - x - count < pixels.group) count = n - x;  // an odd pixel has its neighbour before it
    stage(x, count);
  }
}

// The same past the cache or, where that does not pay, in one go; from src_bytes.
template <class Write, class Stream>
void write_pixels(const Kernels& kernels, uint8_t* dst, size_t n, size_t src_bytes,
                  const StreamedPixels& pixels, const Write& write, const Stream& stream) {
  if (!is_streamed(kernels, src_bytes + n * pixels.bytes)) {
    write(dst, 0, n);
    return;
  }
  StagedLines staged(kernels);
  stream_pixels(staged, dst, n, pixels, write, stream);
  staged.finish();
}

// Copies rows, `bytes` in all.
class RowCopier {
 public:
  RowCopier(const Kernels& kernels, size_t bytes)
      : kernels_(kernels), streams_(is_streamed(kernels, 2 * bytes)) {}
  ~RowCopier() {
    if (streams_) kernels_.end_stream();
  }
  RowCopier(const RowCopier&) = delete;
  RowCopier& operator=(const RowCopier&) = delete;

  void operator()(uint8_t* dst, const uint8_t* src, size_t bytes) const {
    if (streams_) {
      kernels_.stream(dst, src, bytes);
    } else {
      memcpy(dst, src, bytes);
    }
  }

 private:
  const Kernels& kernels_;
  const bool streams_;
};

class RowWriter {
 public:
  // For one frame: so many pixels, made of src_bytes.
  RowWriter(const Kernels& kernels, Source source, Sink sink, size_t src_bytes, size_t pixels);
  ~RowWriter() { finish(); }
  RowWriter(const RowWriter&) = delete;
  RowWriter& operator=(const RowWriter&) = delete;

  bool streams() const { return streams_; }
  bool small() const { return small_; }  // RowArgs::write_ahead would only cost time

  // As a row kernel, dst not a. What is streamed may not be there before finish().
  void operator()(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n, const RowArgs& args) {
    if (streams_) {
      stream(dst, a, b, n, args);
    } else {
      kernel_(dst, a, b, n, args);
    }
  }
  // Rows of a frame, one below the other, from a source of two rows: see RowArgs::rows, which it
  // sets, as it does write_ahead.
  void rows(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n, size_t count,
            RowArgs& args);
  void finish() {
    if (streams_) staged_.finish();
  }

 private:
  void stream(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n, const RowArgs& args);

  const RowKernel kernel_;
  const StreamedRowKernel streamed_;
  const Source source_;
  const SinkTraits& sink_;
  const bool streams_;
  const bool small_;
  StagedLines staged_;
};

}  // namespace lum

#endif
