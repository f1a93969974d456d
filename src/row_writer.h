// SPDX-License-Identifier: MIT
// Rows of a frame to memory: by a row kernel as it stands, or past the cache where the frame would
// not stay in it anyway. An ordinary store to a line that is not cached fetches the line first;
// whole lines that are streamed are only written, which saves up to half of the traffic. Kernels
// write where they please, so streamed rows are made in a piece of stack that stays in the
// first-level cache and copied from there line by line. That pays where memory is the limit: the
// copy takes its time, and arithmetic does not hide it.
#ifndef LUM_ROW_WRITER_H
#define LUM_ROW_WRITER_H

#include <stddef.h>
#include <stdint.h>

#include <algorithm>

#include "simd/kernel_table.h"

namespace lum {

// Whether an output of so many bytes is streamed. Up to half the last-level cache it is not: beside
// its source it may stay there, and what reads it next finds it. A size alone cannot tell a cold
// frame from a warm one; this rule loses least over both.
bool is_streamed(const Kernels& kernels, size_t bytes);

// Streams n pixels that produce(to, x, count) makes, pixels x to x + count - 1 at a time; it may
// write two pixels more.
template <class Produce>
void stream_pixels(const Kernels& kernels, uint8_t* dst, size_t n, size_t pixel_bytes,
                   Produce produce) {
  constexpr size_t kPiece = 2048, kBeyond = 2, kMostPixelBytes = 8, kLine = 64;
  alignas(kLine) uint8_t stage[kLine + (kPiece + kBeyond) * kMostPixelBytes];
  for (size_t x = 0; x < n; x += kPiece) {
    const size_t count = std::min(kPiece, n - x);
    uint8_t* const to = dst + x * pixel_bytes;
    uint8_t* const staged = stage + reinterpret_cast<uintptr_t>(to) % kLine;  // lines for lines
    produce(staged, x, count);
    kernels.stream(to, staged, count * pixel_bytes);
  }
}

class RowWriter {
 public:
  // For an output of `bytes` in all, one frame's.
  RowWriter(const Kernels& kernels, Source source, Sink sink, size_t bytes);
  ~RowWriter() {
    if (streams_) kernels_.end_stream();
  }
  RowWriter(const RowWriter&) = delete;
  RowWriter& operator=(const RowWriter&) = delete;

  bool streams() const { return streams_; }
  // As a row kernel, dst not a.
  void operator()(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
                  const RowArgs& args) const {
    if (streams_) {
      stream(dst, a, b, n, args);
    } else {
      kernel_(dst, a, b, n, args);
    }
  }

 private:
  void stream(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n, RowArgs args) const;

  const Kernels& kernels_;
  const RowKernel kernel_;
  const SourceTraits source_;
  const size_t pixel_bytes_;
  const bool streams_;
};

}  // namespace lum

#endif
