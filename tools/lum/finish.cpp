// SPDX-License-Identifier: MIT
#include "finish.h"

#include "conversion.h"
#include "failure.h"

namespace lum_tool {
namespace {

void need(const char* function, uint32_t code) {
  if (code != 0)
    throw Failure(std::string(function) + ": " + result_text(static_cast<int32_t>(code)));
}

uint32_t channels_of(const LumPixelInfo& pixel) {
  switch (pixel.pixelLayout) {
    case LumPixelLayoutMono:
      return 1;
    case LumPixelLayoutRGB:
    case LumPixelLayoutBGR:
      return 3;
    default:
      return 4;
  }
}

}  // namespace

void Finish::check(const Destination& format, const FrameSize& picture) const {
  const LumPixelInfo& pixel = format.pixel;
  if ((size || flip != 0 || i420) && pixel.pixelLayout == LumPixelLayoutYUV422)
    throw Failure("--flip, --resize and --i420 work on whole pixels, which " + format.name +
                  " does not have; convert to BGR24, for instance");
  constexpr uint32_t kLargest = 65535;
  const uint32_t sides[] = {picture.width, picture.height, size ? size->width : 1,
                            size ? size->height : 1};
  for (const uint32_t side : sides)
    if (size && side > kLargest) throw Failure("--resize: no side may be longer than 65535");
  const FrameSize end = finished(picture);
  if (i420 && pixel.bitsPerPixel / channels_of(pixel) != 8)
    throw Failure("--i420 is made of 8-bit samples, not of " + format.name);
  if (i420 && (end.width % 2 != 0 || end.height % 2 != 0))
    throw Failure("--i420 needs an even width and height, not " + std::to_string(end.width) + "x" +
                  std::to_string(end.height));
}

FrameSize Finish::finished(const FrameSize& picture) const {
  const FrameSize resized = size ? *size : picture;
  return flip >= 4 ? FrameSize{resized.height, resized.width} : resized;
}

void Finish::apply(const Destination& format, const FrameSize& picture, Bytes& pixels) const {
  const uint32_t channels = channels_of(format.pixel);
  const uint32_t bytes = format.pixel.bitsPerPixel / 8, sample_bytes = bytes / channels;
  FrameSize now = picture;
  Bytes changed;
  if (size) {
    changed.resize(uint64_t{size->width} * size->height * bytes);
    need("LumResize", LumResize(changed.data(), pixels.data(), size->width, size->height, now.width,
                                now.height, channels, sample_bytes, nearest ? 0 : 1));
    pixels.swap(changed);
    now = *size;
  }
  if (flip != 0) {
    changed.resize(pixels.size());
    need("LumFlip", LumFlip(changed.data(), pixels.data(), now.width, now.height, bytes, flip));
    pixels.swap(changed);
    now = finished(picture);
  }
  if (i420) {
    changed.resize(uint64_t{now.width} * now.height / 2 * 3);
    need("LumImageToI420", LumImageToI420(changed.data(), pixels.data(), now.width, now.height,
                                          format.pixel.pixelLayout));
    pixels.swap(changed);
  }
}

void unpack_frame(uint32_t packing, const Bytes& frame, uint64_t pixels, Bytes& words) {
  if (pixels > UINT32_MAX) throw Failure("--unpack: a frame may have 4294967295 pixels at most");
  LumBitDepthInfo lower_bits = {};
  lower_bits.alignment = 1;
  words.resize(pixels * 2);
  need("LumUnpackTo16", LumUnpackTo16(words.data(), frame.data(), static_cast<uint32_t>(pixels),
                                      packing, &lower_bits));
}

}  // namespace lum_tool
