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
#include <string.h>

#include <algorithm>

#include "simd/kernel_table.h"

namespace lum {

// Whether an output of so many bytes is streamed. Up to half the last-level cache it is not: beside
// its source it may stay there, and what reads it next finds it. A size alone cannot tell a cold
// frame from a warm one; this rule loses least over both.
bool is_streamed(const Kernels& kernels, size_t bytes);

// Streams n pixels of at most 16 bytes that produce(to, x, count) makes, pixels x to x + count - 1
// at a time; x is a multiple of 64. It may write two pixels more.
template <class Produce>
void stream_pixels(const Kernels& kernels, uint8_t* dst, size_t n, size_t pixel_bytes,
                   Produce produce) {
  constexpr size_t kBytes = 6144, kBeyond = 2 * 16, kMultiple = 64, kLine = 64;
  alignas(kLine) uint8_t stage[kLine + kBytes + kBeyond];
  const size_t piece = kBytes / pixel_bytes / kMultiple * kMultiple;
  for (size_t x = 0; x < n; x += piece) {
    const size_t count = std::min(piece, n - x);
    uint8_t* const to = dst + x * pixel_bytes;
    uint8_t* const staged = stage + reinterpret_cast<uintptr_t>(to) % kLine;  // lines for lines
    produce(staged, x, count);
    kernels.stream(to, staged, count * pixel_bytes);
  }
}

// The same past the cache or, where that does not pay, in one go.
template <class Produce>
void write_pixels(const Kernels& kernels, uint8_t* dst, size_t n, size_t pixel_bytes,
                  Produce produce) {
  if (!is_streamed(kernels, n * pixel_bytes)) {
    produce(dst, 0, n);
    return;
  }
  stream_pixels(kernels, dst, n, pixel_bytes, produce);
  kernels.end_stream();
}

// Copies rows of an output of `bytes` in all.
class RowCopier {
 public:
  RowCopier(const Kernels& kernels, size_t bytes)
      : kernels_(kernels), streams_(is_streamed(kernels, bytes)) {}
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
