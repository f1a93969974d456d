// SPDX-License-Identifier: MIT
#include "row_writer.h"

#include <string.h>

#include "simd/isa.h"

namespace lum {

bool is_streamed(const Kernels& kernels, size_t bytes) {
  if (kernels.stream == nullptr) return false;
  return bytes > (kernels.stream_above != 0 ? kernels.stream_above : kept_in_cache());
}

size_t pixels_to_line(const uint8_t* dst, size_t n, const StreamedPixels& pixels) {
  const auto begins_line = [&](size_t x) {
    return reinterpret_cast<uintptr_t>(dst + x * pixels.bytes) % kCacheLine == 0;
  };
  if (begins_line(0)) return 0;
  const size_t end = std::min(n, kMostToLine);  // then they repeat
  for (size_t x = kStreamedGroup; x + pixels.group <= end; x += pixels.group) {
    if (begins_line(x)) return x;
  }
  return n;
}

uint8_t* StagedLines::at(uint8_t* dst, size_t bytes) {
  if (dst != first_ + end_) {
    flush();
    begin_ = end_ = reinterpret_cast<uintptr_t>(dst) % kCacheLine;
    first_ = dst - begin_;
  } else if (end_ + bytes > kRoom) {
    flush_lines();
  }
  uint8_t* const to = bytes_ + end_;
  end_ += bytes;
  return to;
}

void StagedLines::flush_lines() {
  const size_t whole = end_ / kCacheLine * kCacheLine;
  if (whole == 0) return;
  kernels_.stream(first_ + begin_, bytes_ + begin_, whole - begin_);
  memcpy(bytes_, bytes_ + whole, end_ - whole);
  first_ += whole;
  end_ -= whole;
  begin_ = 0;
}

void StagedLines::flush() {
  if (end_ > begin_) kernels_.stream(first_ + begin_, bytes_ + begin_, end_ - begin_);
  begin_ = end_;
}

RowWriter::RowWriter(const Kernels& kernels, Source source, Sink sink, size_t src_bytes,
                     size_t pixels)
    : kernel_(kernels.at(source, sink)),
      streamed_(kernels.streamed[static_cast<size_t>(source)][static_cast<size_t>(sink)]),
      source_(source),
      sink_(kSinks[static_cast<size_t>(sink)]),
      streams_(streamed_ != nullptr &&
               is_streamed(kernels, src_bytes + pixels * sink_.pixel_bytes)),
      small_(src_bytes + pixels * sink_.pixel_bytes <= kPrefetchAbove),
      staged_(kernels) {}

void RowWriter::rows(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n, size_t count,
                     RowArgs& args) {
  args.rows = count;
  if (!streams_) {
    if (small_) args.write_ahead = 0;
    kernel_(dst, a, b, n, args);
  } else if (n % kStreamedGroup == 0 && reinterpret_cast<uintptr_t>(dst) % kCacheLine == 0) {
    streamed_(dst, a, b, n, args);
  } else {
    args.rows = 1;
    for (; count > 0; --count, dst += n * sink_.pixel_bytes) {
      stream(dst, a, b, n, args);
      (a < b ? a : b) += 2 * row_bytes(source_, n);
    }
  }
}

void RowWriter::stream(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
                       const RowArgs& args) {
  // The last pixel of two rows has no neighbour to be made of, so it is not the last of a piece.
  // Their colours take turns from column to column.
  const SourceTraits& traits = kSources[static_cast<size_t>(source_)];
  const bool two_rows = traits.rows == 2;
  const size_t beyond = two_rows ? 2 : 0;
  const StreamedPixels pixels = {
      sink_.pixel_bytes, std::max({two_rows ? 2u : 1u, traits.group_pixels, sink_.group_pixels})};
  const auto beside = [&](size_t x) { return two_rows ? b + row_bytes(source_, x) : nullptr; };
  const auto args_of_piece = [&](size_t x, size_t count) {
    RowArgs args_here = args;
    args_here.begins = x == 0 ? args.begins : 0;
    args_here.ends = x + count == n ? args.ends : 0;
    return args_here;
  };
  const auto write = [&](uint8_t* to, size_t x, size_t count) {
    RowArgs args_here = args_of_piece(x, count);
    args_here.write_ahead = 0;
    kernel_(to, a + row_bytes(source_, x), beside(x), std::min(count + beyond, n - x), args_here);
  };
  const auto stream = [&](uint8_t* to, size_t x, size_t count) {
    return streamed_(to, a + row_bytes(source_, x), beside(x), count, args_of_piece(x, count));
  };
  stream_pixels(staged_, dst, n, pixels, write, stream);
}

}  // namespace lum
