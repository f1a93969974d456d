// SPDX-License-Identifier: MIT
#include "row_writer.h"

#include "simd/isa.h"

namespace lum {
namespace {

// A pixel whose fourth byte stays as it is leaves no line to be written as a whole, and one of a
// single byte is so little to write that the copy takes longer than it saves.
constexpr size_t kLeastPixelBytes = 2;
bool is_worth_streaming(Source source, Sink sink) {
  const bool own_alpha = source == Source::rgba32 || source == Source::bgra32;
  const bool keeps_bytes = (sink == Sink::bgra32 || sink == Sink::rgba32) && !own_alpha;
  const bool moves_bytes = source == Source::yuv411 && sink == Sink::uyvy;
  return (kSources[static_cast<size_t>(source)].memory_bound || moves_bytes) && !keeps_bytes &&
         pixel_bytes(sink) >= kLeastPixelBytes;
}

}  // namespace

bool is_streamed(const Kernels& kernels, size_t bytes) {
  if (kernels.stream == nullptr) return false;
  return bytes > (kernels.stream_above != 0 ? kernels.stream_above : last_level_cache() / 2);
}

RowWriter::RowWriter(const Kernels& kernels, Source source, Sink sink, size_t bytes)
    : kernels_(kernels),
      kernel_(kernels.at(source, sink)),
      source_(kSources[static_cast<size_t>(source)]),
      pixel_bytes_(lum::pixel_bytes(sink)),
      streams_(is_worth_streaming(source, sink) && is_streamed(kernels, bytes)) {}

void RowWriter::stream(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
                       RowArgs args) const {
  args.write_ahead = 0;
  // The last pixel of two rows has no neighbour to be made of, so it is not the last of a piece.
  const size_t beyond = source_.rows == 2 ? 2 : 0;
  stream_pixels(kernels_, dst, n, pixel_bytes_, [&](uint8_t* to, size_t x, size_t count) {
    const size_t at = x / source_.group_pixels * source_.group_bytes;
    kernel_(to, a + at, b == nullptr ? nullptr : b + at, std::min(count + beyond, n - x), args);
  });
}

}  // namespace lum
