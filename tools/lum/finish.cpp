// SPDX-License-Identifier: MIT
#include "finish.h"

#include "conversion.h"
#include "failure.h"

namespace lum_tool {
namespace {

constexpr uint32_t kLargestSide = 65535;  // of LumResize

std::string text_of(const FrameSize& size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

FrameSize half(const FrameSize& size) { return {size.width / 2, size.height / 2}; }

uint32_t channels_of(uint32_t layout) {
  switch (layout) {
    case LumPixelLayoutMono:
      return 1;
    case LumPixelLayoutRGB:
    case LumPixelLayoutBGR:
    case LumPixelLayoutYUV444:
      return 3;
    case LumPixelLayoutRGBA:
    case LumPixelLayoutBGRA:
      return 4;
    default:
      return 0;
  }
}

bool is_grouped_yuv(uint32_t layout) {
  return layout == LumPixelLayoutYUV411 || layout == LumPixelLayoutYUV422;
}

}  // namespace

bool goes_to_i420(const LumPixelInfo& pixel) {
  const uint32_t channels = channels_of(pixel.pixelLayout);
  return is_grouped_yuv(pixel.pixelLayout) || (channels > 0 && pixel.bitsPerPixel == 8 * channels);
}

FrameSize Geometry::binned(const FrameSize& picture) const {
  return bin ? FrameSize{picture.width / bin->width, picture.height / bin->height} : picture;
}

FrameSize Geometry::finished(const FrameSize& picture) const {
  const FrameSize sized = size ? *size : binned(picture);
  return flip >= 4 ? FrameSize{sized.height, sized.width} : sized;
}

void Geometry::check(const FrameSize& picture) const {
  if (bin && (bin->width > picture.width || bin->height > picture.height))
    throw Failure("--bin " + text_of(*bin) + ": a picture of " + text_of(picture) +
                  " has no such block");
  const FrameSize from = binned(picture);
  for (const FrameSize& one : {from, size.value_or(from)})
    if (size && (one.width > kLargestSide || one.height > kLargestSide))
      throw Failure("--resize: " + text_of(one) + "; no side may be longer than 65535");
}

void Geometry::apply(const FrameSize& picture, uint32_t channels, uint32_t sample_bytes,
                     Bytes& pixels) const {
  const uint32_t bytes = channels * sample_bytes;
  FrameSize now = picture;
  Bytes changed;
  if (bin) {
    const FrameSize to = binned(picture);
    changed.resize(uint64_t{to.width} * to.height * bytes);
    need("LumBin", LumBin(changed.data(), pixels.data(), now.width, now.height, channels,
                          sample_bytes, bin->width, bin->height));
    pixels.swap(changed);
    now = to;
  }
  if (size) {
    changed.resize(uint64_t{size->width} * size->height * bytes);
    need("LumResize", LumResize(changed.data(), pixels.data(), size->width, size->height, now.width,
                                now.height, channels, sample_bytes, nearest ? 0 : 1));
    pixels.swap(changed);
    now = *size;
  }
  if (flip != 0) {
    changed.resize(uint64_t{now.width} * now.height * bytes);
    need("LumFlip", LumFlip(changed.data(), pixels.data(), now.width, now.height, bytes, flip));
    pixels.swap(changed);
  }
}

void Finish::check(const std::string& name, const LumPixelInfo& pixel,
                   const FrameSize& picture) const {
  const bool grouped = is_grouped_yuv(pixel.pixelLayout);
  if (grouped && !i420 && geometry.any())
    throw Failure("--bin, --resize and --flip work on whole pixels, which " + name +
                  " does not have; convert to BGR24, for instance");
  geometry.check(picture);
  if (!i420) return;
  if (!goes_to_i420(pixel)) throw Failure("--i420 is made of 8-bit samples, not of " + name);
  FrameSize sizes[] = {geometry.finished(picture), picture, geometry.binned(picture)};
  for (const FrameSize& size : sizes)
    if ((size.width % 2 != 0 || size.height % 2 != 0) && (grouped || &size == sizes))
      throw Failure("--i420 needs an even width and height, not " + text_of(size));
}

Bytes Finish::applied(const LumPixelInfo& pixel, const FrameSize& picture,
                      const Bytes& pixels) const {
  const bool grouped = is_grouped_yuv(pixel.pixelLayout);
  const bool moved = !grouped && geometry.any();
  Bytes result;
  if (moved || !i420) result = pixels;
  if (moved) {
    const uint32_t channels = channels_of(pixel.pixelLayout);
    geometry.apply(picture, channels, pixel.bitsPerPixel / 8 / channels, result);
  }
  if (!i420) return result;

  const FrameSize now = grouped ? picture : geometry.finished(picture);
  Bytes planes(uint64_t{now.width} * now.height / 2 * 3);
  need("LumImageToI420", LumImageToI420(planes.data(), (moved ? result : pixels).data(), now.width,
                                        now.height, pixel.pixelLayout));
  if (!grouped || !geometry.any()) return planes;

  Geometry chroma = geometry;
  if (chroma.size) chroma.size = half(*chroma.size);
  auto from = planes.cbegin();
  for (int plane = 0; plane < 3; ++plane) {
    const FrameSize size = plane == 0 ? picture : half(picture);
    const auto end = from + std::ptrdiff_t(uint64_t{size.width} * size.height);
    Bytes samples(from, end);
    (plane == 0 ? geometry : chroma).apply(size, 1, 1, samples);
    result.insert(result.end(), samples.begin(), samples.end());
    from = end;
  }
  return result;
}

}  // namespace lum_tool
