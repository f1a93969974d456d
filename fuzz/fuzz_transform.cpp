// SPDX-License-Identifier: MIT
// The two dispatchers, with any descriptors and parameters, against the function that lum.h names
// for these; with a colour matrix, against the per-pixel reference.
#include <string.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "convert/mono.h"
#include "frame/destination.h"
#include "frame/pixel_formats.h"
#include "harness.h"
#include "lum/lum.h"
#include "reference.h"

namespace lum::fuzz {
namespace {

uint32_t number(Input& in, uint32_t most) { return in.ConsumeIntegralInRange<uint32_t>(0, most); }

// Where a call has to go. Pairs that are refused read nothing.
using Direct = std::function<uint32_t(uint8_t* dst, const uint8_t* src)>;
struct Route {
  size_t src_bytes = 0;
  Direct call = [](uint8_t*, const uint8_t*) {
    return static_cast<uint32_t>(LumErrorBadParameter);
  };
};

using Flat = uint32_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t);
using Mosaic = uint32_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t, uint32_t, uint32_t);

Route to(Flat function, size_t bytes, const LumImageInfo& i, uint32_t format) {
  return {bytes,
          [=](uint8_t* d, const uint8_t* s) { return function(d, s, i.width * i.height, format); }};
}
Route to(Mosaic function, size_t bytes, const LumImageInfo& i, uint32_t format) {
  return {bytes, [=](uint8_t* d, const uint8_t* s) {
            return function(d, s, i.width, i.height, format, i.pixelInfo.bayerPattern);
          }};
}

Route route(const LumImageInfo& i, uint32_t format, uint32_t debayer_mode) {
  constexpr Mosaic kModes[] = {LumRaw8ImageTransform, LumRaw8ImageTransform_3x3,
                               LumRaw8ImageTransform_IntLCAA, LumRaw8ImageTransform_IntLCAAV,
                               LumRaw8ImageTransform_IntYUV422};
  const LumPixelInfo& p = i.pixelInfo;
  const size_t n = size_t{i.width} * i.height, packed = n / 2 * 3;
  const uint32_t bits = p.bitsPerPixel;
  const LumBitDepthInfo depth = {0, p.alignment, p.bitsUsed, p.endianness, p.bayerPattern};
  switch (p.pixelLayout) {
    case LumPixelLayoutMono:
      if (bits == 8) return to(LumY8ImageTransform, n, i, format);
      if (bits != 16) return {};
      if (p.bitsUsed == 16) {
        return to(p.endianness != 0 ? LumY16ImageTransform : y16_little_endian_image_transform,
                  2 * n, i, format);
      }
      return {2 * n, [=](uint8_t* d, const uint8_t* s) {
                return LumY16ImageTransformEx(d, s, i.width * i.height, format, &depth);
              }};
    case LumPixelLayoutMonoPacked:
      return bits == 12 ? to(LumY12ImageTransform, packed, i, format) : Route{};
    case LumPixelLayoutRGB:
      return bits == 24 ? to(LumRGB8ImageTransform, 3 * n, i, format) : Route{};
    case LumPixelLayoutYUV411:
      return to(LumYUV411ImageTransform, packed, i, format);
    case LumPixelLayoutYUV422:
      return to(LumYUV422ImageTransform, 2 * n, i, format);
    case LumPixelLayoutYUV444:
      return to(LumYUV444ImageTransform, 3 * n, i, format);
    default:
      break;
  }
  if (p.pixelLayout > LumPixelLayoutYUV444) return {};
  const bool raw = p.pixelLayout == LumPixelLayoutRaw;
  const bool colour = !raw && p.pixelLayout != LumPixelLayoutRawPacked;
  if (p.pixelLayout == LumPixelLayoutBGR && bits == 24) {
    return to(LumBGR8ImageTransform, 3 * n, i, format);
  }
  if (colour && bits == 32) {
    return to(p.pixelLayout == LumPixelLayoutBGRA ? LumBGRA8ImageTransform : LumRGBA8ImageTransform,
              4 * n, i, format);
  }
  if (bits == 8) return debayer_mode > 4 ? Route{} : to(kModes[debayer_mode], n, i, format);
  if (bits == 12 && !raw) return to(LumRaw12ImageTransform, packed, i, format);
  if (bits != 16) return {};
  if (p.bitsUsed == 16 && p.endianness == 1) {
    return to(LumRaw16ImageTransform, 2 * n, i, format);
  }
  return {2 * n, [=](uint8_t* d, const uint8_t* s) {
            return LumRaw16ImageTransformEx(d, s, i.width, i.height, format, &depth);
          }};
}

// With 10 bits behind the point, truncated.
int32_t fixed_point(float coefficient) {
  const double scaled = double{coefficient} * 1024;
  if (std::isnan(scaled)) return 0;
  return static_cast<int32_t>(std::clamp<double>(scaled, INT32_MIN, INT32_MAX));
}

// The way of its own that mosaics go with a colour matrix: blocks, each corrected.
Route corrected(const LumImageInfo& i, uint32_t format, const float* coefficients) {
  const LumPixelInfo& p = i.pixelInfo;
  const bool raw = p.pixelLayout == LumPixelLayoutRaw;
  if (!raw && p.pixelLayout != LumPixelLayoutRawPacked) return {};
  const bool grey8 = format == LUM_FORMAT_MONO8_REC601 || format == LUM_FORMAT_MONO8_REC709;
  const bool grey16 = format == LUM_FORMAT_MONO16_REC601 || format == LUM_FORMAT_MONO16_REC709;
  const bool deep = grey16 || format == LUM_FORMAT_BGR48;
  const uint32_t w = i.width, h = i.height;
  const uint32_t pattern = p.bayerPattern & 3;
  const size_t n = size_t{w} * h;
  std::array<int32_t, 9> matrix;
  for (size_t k = 0; k < 9; ++k) matrix[k] = fixed_point(coefficients[k]);
  const auto store = [=](uint8_t* d, const reference::Sampler& sample, int shift) {
    const auto frame = reference::correct(reference::bayer(w, h, pattern, sample), matrix.data(),
                                          deep ? 10 : shift, deep ? 65535 : 255);
    // All greys are BT.601.
    const uint32_t stored = grey16 ? uint32_t{LUM_FORMAT_MONO16_REC601} : format;
    reference::store_mosaic(stored, frame, w, h, d);
  };
  const bool nothing = w < 2 || h < 2;
  if (raw && p.bitsPerPixel == 8 && (grey8 || format == LUM_FORMAT_BGR24)) {
    return {n, [=](uint8_t* d, const uint8_t* s) {
              if (nothing) return 0u;
              if (grey8) {
                reference::store_mosaic(LUM_FORMAT_MONO8_REC601,
                                        reference::correct_mono8(s, w, h, pattern, matrix.data()),
                                        w, h, d);
              } else {
                store(d, reference::bytes_of(s, w), 10);
              }
              return 0u;
            }};
  }
  if (raw && p.bitsPerPixel == 16 && deep) {
    const uint32_t used = p.bitsUsed;
    return {2 * n, [=](uint8_t* d, const uint8_t* s) {
              const reference::Sampler words =
                  used == 0 || used > 16 ? reference::Sampler([](size_t, size_t) { return 0; })
                                         : reference::shifted_words(s, w, 16 - used, false);
              if (!nothing) store(d, words, 10);
              return 0u;
            }};
  }
  if (format != LUM_FORMAT_BGR24 && format != LUM_FORMAT_BGR48) return {};
  return {n / 2 * 3, [=](uint8_t* d, const uint8_t* s) {
            if (nothing || w % 2 != 0) return 0u;
            const reference::Sampler sample = reference::packed12_samples(s, w);
            const int up = deep ? 4 : 0;
            store(
                d, [&](size_t x, size_t y) { return sample(x, y) << up; }, 14);
            return 0u;
          }};
}

// ---- Descriptors: mostly those of a camera's format, now and then with a field changed.
LumImageInfo any_source(Input& in, uint32_t width, uint32_t height) {
  LumImage image = {};
  image.size = sizeof image;
  const size_t row = in.ConsumeIntegralInRange<size_t>(0, kPixelFormats.size() - 1);
  LumSetImageInfoFromPixelFormat(kPixelFormats[row].code, width, height, &image);
  LumPixelInfo& p = image.imageInfo.pixelInfo;
  if (in.ConsumeBool()) p.endianness = number(in, mostly(in) ? 1 : 3);
  if (in.ConsumeBool()) p.alignment = number(in, mostly(in) ? 1 : 3);
  if (!mostly(in)) p.bitsUsed = number(in, 20);
  if (!mostly(in)) p.pixelLayout = number(in, 12);
  if (!mostly(in)) p.bayerPattern = mostly(in) ? number(in, 5) : in.ConsumeIntegral<uint32_t>();
  if (!mostly(in)) {
    p.bitsPerPixel = in.PickValueInArray({8u, 10u, 12u, 16u, 24u, 32u, 48u, UINT32_MAX});
  }
  return image.imageInfo;
}

std::vector<LumTransformInfo> any_parameters(Input& in) {
  std::vector<LumTransformInfo> out(mostly(in) ? number(in, 1) : number(in, 4));
  for (LumTransformInfo& entry : out) {
    memset(&entry, 0, sizeof entry);
    switch (number(in, 3)) {
      case 0:
        LumSetDebayerMode(number(in, mostly(in) ? 4 : 6), &entry);
        break;
      case 1: {
        float m[9];
        const bool usual = mostly(in);
        for (float& value : m) {
          const uint32_t bits = in.ConsumeIntegral<uint32_t>();
          value = static_cast<float>(static_cast<int32_t>(bits) >> 16) / 8192;
          if (!usual) memcpy(&value, &bits, sizeof value);
        }
        LumSetColorCorrectionMatrix3x3(m, &entry);
        break;
      }
      case 2:
        LumSetGammaCorrection(&entry, 2.2f);
        break;
      default:
        entry.transformType = in.ConsumeIntegral<uint8_t>();
    }
  }
  return out;
}

const LumTransformInfo* first(const std::vector<LumTransformInfo>& entries, uint32_t type) {
  for (const LumTransformInfo& entry : entries) {
    if (entry.transformType == type) return &entry;
  }
  return nullptr;
}

void set_route(Call& call, const Route& route, uint32_t format, size_t pixels) {
  call.src_bytes = route.src_bytes;
  call.dst_bytes = pixels * reference::pixel_bytes(format);
  call.expected = route.call;
}

Call image_transform(Input& in, uint32_t width, uint32_t height) {
  LumImage source = {}, destination = {};
  source.size = destination.size = sizeof source;
  source.imageInfo = any_source(in, width, height);
  const uint32_t format = number(in, kSinkCount - 1);
  LumSetImageInfoOutput(format, width, height, &destination);
  const std::vector<LumTransformInfo> entries = any_parameters(in);
  const LumTransformInfo* const matrix = first(entries, LumTransformTypeColorCorrectionMatrix);
  const LumTransformInfo* const debayer = first(entries, LumTransformTypeDebayerMode);
  const uint32_t mode = debayer == nullptr ? 0 : debayer->parameter.debayerMode;

  const LumPixelInfo& p = source.imageInfo.pixelInfo;
  Call call;
  call.what =
      describe("LumImageTransform", width, height, p.pixelLayout, p.bitsPerPixel, p.bitsUsed,
               p.alignment, p.endianness, p.bayerPattern, format, mode, matrix != nullptr);
  const Route way = matrix != nullptr
                        ? corrected(source.imageInfo, format, matrix->parameter.matrix)
                        : route(source.imageInfo, format, mode);
  set_route(call, way, format, size_t{width} * height);
  if (p.pixelLayout == LumPixelLayoutMono && p.bitsPerPixel == 8 && format == LUM_FORMAT_UYVY) {
    call.dst_bytes += width * height % 2;
  }
  if (!mostly(in)) destination.imageInfo.width += number(in, 2);
  if (!mostly(in)) source.imageInfo.height += number(in, 1);
  if (!mostly(in)) source.size -= number(in, 1);
  if (!mostly(in)) destination.size -= number(in, 1);
  // A mono destination without a colour space is BT.601; others do not look at it.
  LumColorSpace& space = destination.imageInfo.colorSpace;
  if (!mostly(in) && space == LumColorSpaceItuBt601) space = LumColorSpaceUndefined;
  if (!mostly(in)) destination.imageInfo.pixelInfo.bitsUsed = number(in, 20);
  const LumImageInfo from = source.imageInfo, to = destination.imageInfo;
  if (from.width != to.width || from.height != to.height) {
    call.expected = Route{}.call;
  } else if (source.size != sizeof source || destination.size != sizeof destination) {
    call.expected = [](uint8_t*, const uint8_t*) {
      return static_cast<uint32_t>(LumErrorStructSize);
    };
  }
  call.run = [=](uint8_t* d, const uint8_t* s) {
    LumImage image = source, result = destination;
    image.data = const_cast<uint8_t*>(s);
    result.data = d;
    return static_cast<uint32_t>(
        LumImageTransform(&image, &result, entries.data(), static_cast<uint32_t>(entries.size())));
  };
  return call;
}

// The older dispatcher tells formats by their codes alone.
Call older_transform(Input& in, uint32_t width, uint32_t height) {
  const size_t row = in.ConsumeIntegralInRange<size_t>(0, kPixelFormats.size() - 1);
  const PixelFormat& f = kPixelFormats[row];
  const uint32_t code = mostly(in) ? f.code : in.ConsumeIntegral<uint32_t>();
  const uint32_t format = number(in, kSinkCount - 1);
  LumImage image = {};
  image.size = sizeof image;
  const bool known = LumSetImageInfoFromPixelFormat(code, width, height, &image) == 0;
  LumPixelInfo& p = image.imageInfo.pixelInfo;
  if (p.bitsPerPixel == 16 && p.bitsUsed == 16) p.endianness = 1;
  Call call;
  call.what = describe("LumTransformOLD", width, height, code, format);
  const bool served = known && code != LumPixelFormatRgb12 && code != LumPixelFormatRgb16;
  set_route(call, served ? route(image.imageInfo, format, 0) : Route{}, format,
            size_t{width} * height);
  if (code == LumPixelFormatMono8 && format == LUM_FORMAT_UYVY) {
    call.dst_bytes += width * height % 2;
  }
  const int ignored = in.ConsumeIntegral<int>();
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return static_cast<uint32_t>(
        LumTransformOLD(d, format, const_cast<uint8_t*>(s), width, height, ignored, code));
  };
  return call;
}

}  // namespace
}  // namespace lum::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace lum::fuzz;
  Input in(data, size);
  const uint32_t kind = number(in, 7);
  const uint32_t widest = kind == 0 ? 4500 : kind < 5 ? 20 : 300, highest = kind == 0 ? 4 : 30;
  const bool even = mostly(in);
  const uint32_t width = number(in, widest) & (even ? ~3u : ~0u);
  const uint32_t height = number(in, highest) & (even ? ~1u : ~0u);
  const auto transform = in.ConsumeBool() ? image_transform : older_transform;
  check(transform(in, width, height), data, size);
  return 0;
}
