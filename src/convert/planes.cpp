// SPDX-License-Identifier: MIT
// YUV of any encoding to BGR24, frames to I420, components to planes and back.
#include <string.h>

#include <algorithm>

#include "arguments.h"
#include "convert/direct.h"
#include "convert/flat.h"
#include "lum/lum.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {
namespace {

// Red from V, green from U, green from V, blue from U, in units of 1/256.
constexpr int32_t kStudioFactors[2][4] = {{409, -100, -208, 516}, {459, -55, -136, 541}};
static_assert(kStudioFactors[0][1] >= -128 && kStudioFactors[1][1] >= -128, "kernels take a byte");

bool yuv_source(uint32_t layout, Source* source) {
  if (layout < LumPixelLayoutYUV411 || layout > LumPixelLayoutYUV444) return false;
  return i420_source(layout, source);
}

uint32_t group_pixels(Source source) { return kSources[static_cast<size_t>(source)].group_pixels; }

// How many samples are before the first line of a cache in every plane; count if the planes are not
// all there or begin differently.
size_t samples_to_line(uint8_t* const* planes, uint32_t channels, uint32_t sample_bytes,
                       size_t count) {
  const size_t first = reinterpret_cast<uintptr_t>(planes[0]) % kCacheLine;
  for (uint32_t i = 0; i < channels; ++i) {
    const bool alike = reinterpret_cast<uintptr_t>(planes[i]) % kCacheLine == first;
    if (planes[i] == nullptr || !alike) return count;
  }
  const size_t bytes = (kCacheLine - first) % kCacheLine;
  return bytes % sample_bytes != 0 ? count : std::min(bytes / sample_bytes, count);
}

// A plane of one value, in a conversion that reads and writes `moved` bytes: past the cache where
// its rows go there, too.
void fill_plane(const Kernels& kernels, uint8_t* dst, uint8_t value, size_t bytes, size_t moved) {
  if (!is_streamed(kernels, moved)) {
    memset(dst, value, bytes);
    return;
  }
  uint8_t piece[4096];
  memset(piece, value, sizeof piece);
  for (size_t x = 0; x < bytes; x += sizeof piece) {
    kernels.stream(dst + x, piece, std::min(sizeof piece, bytes - x));
  }
  kernels.end_stream();
}

// A frame of colours, and its planes.
struct I420Frame {
  uint8_t *y, *u, *v;
  const uint8_t* src;
  Source source;
  uint32_t width, height;

  // Two rows, from column x on.
  I420Rows rows(size_t pair, size_t x) const {
    const size_t src_row = row_bytes(source, width);
    const uint8_t* const from = src + 2 * pair * src_row + row_bytes(source, x);
    uint8_t* const to = y + 2 * pair * width + x;
    const size_t chroma = pair * (width / 2) + x / 2;
    return {{from, from + src_row}, {to, to + width}, u + chroma, v + chroma};
  }
};

// Past the cache, where rows do not begin with lines. The two rows of Y follow one another, and are
// staged as one as long as they fit.
void stage_i420(const Kernels& kernels, uint32_t layout, const I420Frame& frame) {
  StagedLines y(kernels), lower_y(kernels), u(kernels), v(kernels);
  for (size_t pair = 0; pair < frame.height / 2; ++pair) {
    for (size_t x = 0; x < frame.width; x += StagedLines::kPiece) {
      const size_t n = std::min(frame.width - x, StagedLines::kPiece);
      I420Rows rows = frame.rows(pair, x);
      if (n == frame.width) {
        rows.y[0] = y.at(rows.y[0], 2 * n);
        rows.y[1] = rows.y[0] + n;
      } else {
        rows.y[0] = y.at(rows.y[0], n);
        rows.y[1] = lower_y.at(rows.y[1], n);
      }
      rows.u = u.at(rows.u, n / 2);
      rows.v = v.at(rows.v, n / 2);
      kernels.direct.i420[layout](rows, n);
    }
  }
  for (StagedLines* const staged : {&y, &lower_y, &u, &v}) staged->finish();
}

void colours_to_i420(const Kernels& kernels, uint32_t layout, const I420Frame& frame) {
  const size_t y_bytes = size_t{frame.width} * frame.height;
  const size_t moved = row_bytes(frame.source, y_bytes) + y_bytes + y_bytes / 2;
  const auto streamed = kernels.direct.streamed_i420[layout];
  const bool streams = streamed != nullptr && is_streamed(kernels, moved);
  const bool lines =
      frame.width % kStreamedI420 == 0 && reinterpret_cast<uintptr_t>(frame.y) % kCacheLine == 0;
  if (streams && !lines) {
    stage_i420(kernels, layout, frame);
    return;
  }
  const auto convert = streams ? streamed : kernels.direct.i420[layout];
  for (size_t pair = 0; pair < frame.height / 2; ++pair) convert(frame.rows(pair, 0), frame.width);
  if (streams) kernels.end_stream();
}

}  // namespace

void yuv_to_bgr(const Kernels& kernels, Source source, YuvEncoding encoding, uint8_t* dst,
                const uint8_t* src, uint32_t count) {
  if (encoding == YuvEncoding::full601) {
    convert_flat(kernels, source, Sink::bgr24, dst, src, count);
    return;
  }
  RowArgs args;
  args.matrix = kStudioFactors[encoding == YuvEncoding::studio601 ? 0 : 1];
  const size_t kernel = static_cast<size_t>(source) - static_cast<size_t>(Source::yuv411);
  const auto at = [&](size_t x) { return src + row_bytes(source, x); };
  write_pixels(
      kernels, dst, count, row_bytes(source, count), {3, group_pixels(source)},
      [&](uint8_t* to, size_t x, size_t n) {
        kernels.direct.studio_to_bgr24[kernel](to, at(x), nullptr, n, args);
      },
      [&](uint8_t* to, size_t x, size_t n) {
        return kernels.direct.streamed_studio_to_bgr24[kernel](to, at(x), nullptr, n, args);
      });
}

bool i420_source(uint32_t layout, Source* source) {
  switch (layout) {
    case LumPixelLayoutMono:
      *source = Source::mono8;
      return true;
    case LumPixelLayoutRGB:
      *source = Source::rgb24;
      return true;
    case LumPixelLayoutBGR:
      *source = Source::bgr24;
      return true;
    case LumPixelLayoutRGBA:
      *source = Source::rgba32;
      return true;
    case LumPixelLayoutBGRA:
      *source = Source::bgra32;
      return true;
    case LumPixelLayoutYUV411:
      *source = Source::yuv411;
      return true;
    case LumPixelLayoutYUV422:
      *source = Source::yuv422;
      return true;
    case LumPixelLayoutYUV444:
      *source = Source::yuv444;
      return true;
    default:
      return false;
  }
}

void image_to_i420(const Kernels& kernels, uint32_t layout, uint8_t* dst, const uint8_t* src,
                   uint32_t width, uint32_t height) {
  Source source;
  if (!i420_source(layout, &source)) return;
  const size_t y_bytes = size_t{width} * height;
  uint8_t* const u = dst + y_bytes;
  uint8_t* const v = u + y_bytes / 4;
  if (source == Source::mono8) {
    const DirectKernels& direct = kernels.direct;
    const size_t beside_y = y_bytes + y_bytes / 2;  // read, and written to U and V
    write_pixels(
        kernels, dst, y_bytes, beside_y, {1, 1},
        [&](uint8_t* to, size_t x, size_t n) {
          direct.gray_to_studio(to, src + x, nullptr, n, RowArgs());
        },
        [&](uint8_t* to, size_t x, size_t n) {
          return direct.streamed_gray_to_studio(to, src + x, nullptr, n, RowArgs());
        });
    fill_plane(kernels, u, 128, y_bytes / 2, beside_y + y_bytes);
    return;
  }
  colours_to_i420(kernels, layout, I420Frame{dst, u, v, src, source, width, height});
}

void packed_to_planar(const Kernels& kernels, uint8_t* const* planes, const uint8_t* src,
                      uint32_t count, uint32_t channels, uint32_t sample_bytes) {
  const auto split = kernels.direct.split[sample_bytes - 1][channels - 2];
  const size_t pixel = size_t{channels} * sample_bytes;
  const size_t before = is_streamed(kernels, 2 * pixel * count)
                            ? samples_to_line(planes, channels, sample_bytes, count)
                            : count;
  if (before == count) {
    split(planes, src, count);
    return;
  }
  uint8_t* at[kMaxChannels];
  const auto planes_at = [&](size_t x) {
    for (uint32_t i = 0; i < channels; ++i) at[i] = planes[i] + x * sample_bytes;
    return at;
  };
  split(planes, src, before);
  size_t x = before;
  x += kernels.direct.streamed_split[sample_bytes - 1][channels - 2](planes_at(x), src + x * pixel,
                                                                     count - x);
  kernels.end_stream();
  split(planes_at(x), src + x * pixel, count - x);
}

void planar_to_packed(const Kernels& kernels, uint8_t* dst, const uint8_t* const* planes,
                      uint32_t count, uint32_t channels, uint32_t sample_bytes) {
  const auto join = kernels.direct.join[sample_bytes - 1][channels - 2];
  const bool all =
      std::all_of(planes, planes + channels, [](const uint8_t* plane) { return plane != nullptr; });
  if (!all) {
    join(dst, planes, count);
    return;
  }
  struct Planes {
    const uint8_t* from[kMaxChannels];
  };
  const auto planes_at = [&](size_t x) {
    Planes at = {};
    for (uint32_t i = 0; i < channels; ++i) at.from[i] = planes[i] + x * sample_bytes;
    return at;
  };
  const auto streamed_join = kernels.direct.streamed_join[sample_bytes - 1][channels - 2];
  const size_t bytes = size_t{count} * channels * sample_bytes;
  write_pixels(
      kernels, dst, count, bytes, {size_t{channels} * sample_bytes, 1},
      [&](uint8_t* to, size_t x, size_t n) { join(to, planes_at(x).from, n); },
      [&](uint8_t* to, size_t x, size_t n) { return streamed_join(to, planes_at(x).from, n); });
}

}  // namespace lum

using namespace lum;

namespace {

uint32_t check_planes(const void* dst, const void* src, uint32_t count, uint32_t channels,
                      uint32_t sample_bytes) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (count == 0) return bad_parameter(3);
  if (channels < 2 || channels > kMaxChannels) return bad_parameter(4);
  if (sample_bytes != 1 && sample_bytes != 2) return bad_parameter(5);
  return kSuccess;
}

template <class Plane>
bool all_null(Plane* const* planes, uint32_t channels) {
  for (uint32_t i = 0; i < channels; ++i) {
    if (planes[i] != nullptr) return false;
  }
  return true;
}

}  // namespace

uint32_t LumYUVToBGR(uint8_t* dst, const uint8_t* src, uint32_t pixelCount, uint32_t layout,
                     uint32_t encoding) {
  Source source;
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (pixelCount == 0) return bad_parameter(3);
  if (!yuv_source(layout, &source)) return kNotImplemented;
  if (pixelCount % group_pixels(source) != 0) return bad_parameter(3);
  if (encoding >= kYuvEncodingCount) return kNotImplemented;
  yuv_to_bgr(kernels(), source, static_cast<YuvEncoding>(encoding), dst, src, pixelCount);
  return kSuccess;
}

uint32_t LumImageToI420(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                        uint32_t layout) {
  Source source;
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (width == 0) return bad_parameter(3);
  if (height == 0) return bad_parameter(4);
  if (!i420_source(layout, &source)) return kNotImplemented;
  if (width % 2 != 0 || width % group_pixels(source) != 0) return bad_parameter(3);
  if (height % 2 != 0) return bad_parameter(4);
  image_to_i420(kernels(), layout, dst, src, width, height);
  return kSuccess;
}

uint32_t LumPackedToPlanar(uint8_t* const* planes, const uint8_t* src, uint32_t pixelCount,
                           uint32_t channels, uint32_t bytesPerSample) {
  if (const uint32_t error = check_planes(planes, src, pixelCount, channels, bytesPerSample)) {
    return error;
  }
  if (all_null(planes, channels)) return bad_parameter(1);
  packed_to_planar(kernels(), planes, src, pixelCount, channels, bytesPerSample);
  return kSuccess;
}

uint32_t LumPlanarToPacked(uint8_t* dst, const uint8_t* const* planes, uint32_t pixelCount,
                           uint32_t channels, uint32_t bytesPerSample) {
  if (const uint32_t error = check_planes(dst, planes, pixelCount, channels, bytesPerSample)) {
    return error;
  }
  if (all_null(planes, channels)) return bad_parameter(2);
  planar_to_packed(kernels(), dst, planes, pixelCount, channels, bytesPerSample);
  return kSuccess;
}
